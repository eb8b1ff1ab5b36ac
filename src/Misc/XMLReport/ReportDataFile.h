#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoHostTypes.h>
#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>

/// The file in which an analysis leaves its results: an XML document with the element "results" as its root.
///
/// docs/results-file.md describes it, and Schema() in the words of an XML schema. Numbers are kept bit by bit;
/// sensitivities are not kept but computed on reading.
class VOCORE_EXPORT ReportDataFile
{
public:
    YHashTable<XMLReportInfo> cases; ///< The cases by their numbers.
    XMLReportHeader header;          ///< What they have in common.

    /// Reads a file and computes the sensitivities of every case.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException, VoInvalidXMLException for a document that is not
    ///         well formed or brings a document type
    /// @throws VoValidationException saying what is wrong, for one that is not as it should be; names and namespaces
    /// count with their case
    static ReportDataFile Read(const VoFilePath& file);

    /// Writes a file, replacing it as a whole. A case is written with the number that is its key. What is written can
    /// be read again.
    /// @throws VoValidationException "Case " + number + ": more results than the header names", and "Invalid analysis"
    /// for a kind that has no name, the old file intact
    /// @throws VoFileException with the reason, the old file intact
    /// @throws VoInvalidXMLOperation for a text with a character that XML cannot hold
    static void Write(const VoFilePath& file, const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

    /// The XML schema of the file, as text; the same as results.xsd in the installed directory share/VoCore/schemas.
    static VoString Schema();
};
