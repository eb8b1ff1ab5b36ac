#pragma once

#include "Job.h"
#include "TableModel.h"

#include <Actions/VoAction.h>
#include <Actions/VoUndoStack.h>
#include <Application/VoLayeredProperties.h>
#include <Threading/VoReceiver.h>

#include <QtWidgets/QMainWindow>

#include <deque>

class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QTableView;

/// The window of the program.
class MainWindow : public QMainWindow
{
public:
    /// A window without a table, with the settings of a file.
    explicit MainWindow(const VoFilePath& settings);
    ~MainWindow() override;

    /// Shows a file, and remembers it.
    void open(const VoFilePath& file);
    /// The action of an identifier: "file.open", "edit.copy", "job.start" and so on.
    VoAction& action(const VoString& id);
    /// Looks for a newer release in a published folder and, when there is one, installs it.
    void update(const VoFilePath& declarations, const VoDirectoryPath& directory);
    /// Carries out a line as if it had been typed.
    void runLine(const VoString& line);

    TableModel& model() { return *m_model; }
    QTableView& view() { return *m_view; }
    const Job& job() const { return m_job; }
    QString log() const; ///< What was told so far.

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    VoAction& add(const char* id, const char* text, const char* icon, const char* shortcut,
                  const std::function<void()>& function);
    void addActions();
    void addBars();
    void addPanes();
    VoString setting(const char* name) const;
    void keep(const char* name, const VoString& value);
    void tell(const VoString& text);
    void showState();
    bool mayDiscard();
    void start(Job::Work work);
    void exportTo(const char* filter, const char* name, void (*write)(const TableModel&, const VoFilePath&));
    void askAndUpdate();

    VoLayeredProperties m_settings;
    VoUndoStack m_history;
    std::deque<VoAction> m_actions;
    TableModel* m_model;
    QTableView* m_view;
    QPlainTextEdit* m_log = nullptr;
    QLineEdit* m_line = nullptr;
    QProgressBar* m_progress = nullptr;
    VoFilePath m_file;
    VoReceiver m_historyChanges;
    VoReceiver m_clipboardChanges;
    Job m_job; // last: nothing that it tells arrives while the rest is being destroyed
};
