// The case editor's main window: the sections of an engine case with their fields' values, the
// File, Edit, Units and Help menus, and the files of the case.
#pragma once

#include "casefile.h"

#include <QMainWindow>

#include <memory>

class QTreeWidget;
class QTreeWidgetItem;
class QUndoGroup;
class QMenu;
class QActionGroup;

namespace demo {

class TCaseEditor : public QMainWindow {
public:
    TCaseEditor();
    ~TCaseEditor() override;

    TCase& Case() { return *FCase; }
    // Opens FileName; false (with a message box) when it cannot be read.
    bool OpenFile(const QString& FileName);
    bool SaveFile(const QString& FileName);
    // Opens the section (its dialog) as a double click does; returns the dialog's result.
    int EditSection(qxnum::TFieldForm* Section);

protected:
    void closeEvent(QCloseEvent* E) override;

private:
    void MakeMenus();
    void NewCase();
    void Open();
    bool Save();
    bool SaveAs();
    // Asks about unsaved changes; false when the user cancels.
    bool MayDiscard();
    void Refresh();
    void SetCurrentFile(const QString& FileName);
    void AddRecent(const QString& FileName);
    void UpdateRecentMenu();
    void SetUnits(qxnum::TUnitSystem U);

    std::unique_ptr<TCase> FCase;
    QTreeWidget* FTree = nullptr;
    QUndoGroup* FUndo = nullptr;
    QMenu* FRecent = nullptr;
    QActionGroup* FUnits = nullptr;
    QString FFile;
    QStringList FSaved;    // the snapshot of the case as last opened or saved
    bool FUpdated = false; // an old file's fields were taken over: the case differs from its file
};

} // namespace demo
