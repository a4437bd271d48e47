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
    // The Units menu's action: every section shows U. Values do not change, so neither do the
    // marks of changed fields; the case differs from its file while U is not the saved units.
    void SetUnits(qxnum::TUnitSystem U);
    // The fields marked as changed in the list ("Section.Field").
    QStringList ChangedFields() const;

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
    // Takes the case as it is now as the one in its file.
    void MarkSaved();

    std::unique_ptr<TCase> FCase;
    QTreeWidget* FTree = nullptr;
    QUndoGroup* FUndo = nullptr;
    QMenu* FRecent = nullptr;
    QActionGroup* FUnits = nullptr;
    QString FFile;
    QStringList FSaved; // the snapshot of the case as last opened or saved, in the units shown
    qxnum::TUnitSystem FSavedUnits = qxnum::usSI;
    qxnum::THelpHandler FPreviousHelp;
    bool FUpdated = false; // an old file's fields were taken over: the case differs from its file
};

} // namespace demo
