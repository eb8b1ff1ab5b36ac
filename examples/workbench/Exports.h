#pragma once

#include "Job.h"

class TableModel;
class VoFilePath;

/// Writes a workbook with the table.
void ExportWorkbook(const TableModel& model, const VoFilePath& file);
/// Writes a page with the distribution of each column of numbers. Throws VoFileException when it cannot be written.
void ExportReport(const TableModel& model, const VoFilePath& file);
/// The limits between which the mean of each column of numbers lies, by drawing from it many times.
Job::Work EstimateMeans(const TableModel& model);
