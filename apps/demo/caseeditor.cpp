#include "caseeditor.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStatusBar>
#include <QTreeWidget>
#include <QUndoGroup>
#include <QUndoStack>
#include <QVBoxLayout>

namespace demo {

using namespace qxnum;

namespace {

constexpr int MaxRecent = 6;
const char* const FileFilter =
    QT_TRANSLATE_NOOP("TCaseEditor", "Case files (*.xml *.qxc);;XML case files (*.xml);;"
                                     "Binary case files (*.qxc)");

QString Tr(const char* S) {
    return QCoreApplication::translate("TCaseEditor", S);
}

// The grid that has the focus, in whichever section dialog.
TNumGrid* FocusedGrid() {
    for (QWidget* W = QApplication::focusWidget(); W; W = W->parentWidget())
        if (auto* G = qobject_cast<TNumGrid*>(W)) return G;
    return nullptr;
}

} // namespace

TCaseEditor::TCaseEditor() : FCase(std::make_unique<TCase>(this)) {
    // The menus are made from a case; NewCase below makes the one the editor starts with.
    setObjectName(QStringLiteral("CaseEditor"));
    FTree = new QTreeWidget(this);
    FTree->setColumnCount(2);
    FTree->setHeaderLabels({Tr("Section / field"), Tr("Value")});
    FTree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    FTree->setRootIsDecorated(true);
    connect(FTree, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* Item) {
        while (Item->parent())
            Item = Item->parent();
        if (TFieldForm* S = FCase->Section(Item->data(0, Qt::UserRole).toString())) EditSection(S);
    });
    auto* Central = new QWidget(this);
    auto* L = new QVBoxLayout(Central);
    L->addWidget(new QLabel(Tr("Double-click a section (or press Enter on it) to edit it. Changed fields are "
                               "marked with \u25CF until the case is saved."),
                            Central));
    L->addWidget(FTree);
    setCentralWidget(Central);
    FUndo = new QUndoGroup(this);
    connect(qApp, &QApplication::focusChanged, FUndo, [this](QWidget*, QWidget*) {
        if (TNumGrid* G = FocusedGrid()) FUndo->setActiveStack(G->UndoStack());
    });
    MakeMenus();
    resize(760, 620);
    NewCase();
}

TCaseEditor::~TCaseEditor() = default;

void TCaseEditor::MakeMenus() {
    QMenu* File = menuBar()->addMenu(Tr("&File"));
    File->addAction(Tr("&New"), QKeySequence::New, this, [this] {
        if (MayDiscard()) NewCase();
    });
    File->addAction(Tr("&Open..."), QKeySequence::Open, this, [this] { Open(); });
    File->addAction(Tr("&Save"), QKeySequence::Save, this, [this] { Save(); });
    File->addAction(Tr("Save &As..."), QKeySequence::SaveAs, this, [this] { SaveAs(); });
    FRecent = File->addMenu(Tr("Recent &files"));
    File->addSeparator();
    File->addAction(Tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
    UpdateRecentMenu();

    // Undo and Redo follow the grid that last had the focus; Copy and Paste act on the focused grid.
    QMenu* Edit = menuBar()->addMenu(Tr("&Edit"));
    QAction* Undo = FUndo->createUndoAction(Edit);
    Undo->setShortcut(QKeySequence::Undo);
    Undo->setShortcutContext(Qt::WidgetShortcut); // the grid takes the keys itself
    QAction* Redo = FUndo->createRedoAction(Edit);
    Redo->setShortcut(QKeySequence::Redo);
    Redo->setShortcutContext(Qt::WidgetShortcut);
    Edit->addAction(Undo);
    Edit->addAction(Redo);
    Edit->addSeparator();
    Edit->addAction(Tr("&Copy table"), this, [] {
        if (TNumGrid* G = FocusedGrid()) G->CopyToClipboard();
    });
    Edit->addAction(Tr("&Paste"), this, [] {
        if (TNumGrid* G = FocusedGrid()) G->PasteFromClipboard();
    });

    QMenu* Sections = menuBar()->addMenu(Tr("&Sections"));
    for (TFieldForm* S : FCase->Sections())
        Sections->addAction(S->windowTitle() + QStringLiteral("..."), this, [this, Name = S->IDstr()] {
            if (TFieldForm* Section = FCase->Section(Name)) EditSection(Section);
        });

    QMenu* Units = menuBar()->addMenu(Tr("&Units"));
    FUnits = new QActionGroup(this);
    QAction* Si = Units->addAction(Tr("&SI"), this, [this] { SetUnits(usSI); });
    QAction* Imperial = Units->addAction(Tr("&Imperial"), this, [this] { SetUnits(usImperial); });
    for (QAction* A : {Si, Imperial}) {
        A->setCheckable(true);
        FUnits->addAction(A);
    }
    Si->setChecked(true);

    QMenu* Help = menuBar()->addMenu(Tr("&Help"));
    Help->addAction(Tr("&About"), this, [this] {
        QMessageBox::about(
            this, Tr("About the case editor"),
            Tr("<p><b>QXNumCtrls case editor</b></p><p>An engine case in five sections, each a "
               "field form of the QXNumCtrls library: numeric fields in SI or Imperial units, "
               "ordinary fields, a grid and a time series. Cases are kept as XML (*.xml) or "
               "binary (*.qxc) files; files of older versions of the sections are read with "
               "what still fits.</p>"));
    });
}

int TCaseEditor::EditSection(TFieldForm* Section) {
    const int Result = Section->exec();
    Refresh();
    return Result;
}

void TCaseEditor::SetUnits(TUnitSystem U) {
    FCase->SetUnitSystem(U);
    FUnits->actions().at(U == usImperial ? 1 : 0)->setChecked(true);
    Refresh();
}

void TCaseEditor::NewCase() {
    // A new case is a new set of sections: each as its constructor makes it.
    FCase = std::make_unique<TCase>(this);
    for (TFieldForm* S : FCase->Sections())
        for (TNumGrid* G : S->findChildren<TNumGrid*>())
            FUndo->addStack(G->UndoStack());
    SetUnits(usSI);
    FUpdated = false;
    FSaved = FCase->Snapshot();
    SetCurrentFile(QString());
    Refresh();
}

void TCaseEditor::Open() {
    if (!MayDiscard()) return;
    const QString Name =
        QFileDialog::getOpenFileName(this, Tr("Open case"), QFileInfo(FFile).path(), Tr(FileFilter));
    if (!Name.isEmpty()) OpenFile(Name);
}

bool TCaseEditor::OpenFile(const QString& FileName) {
    try {
        FCase->Load(FileName);
    } catch (const std::exception& E) {
        QMessageBox::critical(this, Tr("Open case"),
                              Tr("The case could not be read:\n%1").arg(QString::fromUtf8(E.what())));
        return false;
    }
    FUnits->actions().at(FCase->UnitSystem() == usImperial ? 1 : 0)->setChecked(true);
    FUpdated = FCase->VersionUpdated();
    FSaved = FCase->Snapshot();
    SetCurrentFile(FileName);
    AddRecent(FileName);
    if (FUpdated)
        statusBar()->showMessage(Tr("Read from an older version of the case: save it to keep the update"));
    Refresh();
    return true;
}

bool TCaseEditor::Save() {
    return FFile.isEmpty() ? SaveAs() : SaveFile(FFile);
}

bool TCaseEditor::SaveAs() {
    const QString Name = QFileDialog::getSaveFileName(this, Tr("Save case"), FFile, Tr(FileFilter));
    return !Name.isEmpty() && SaveFile(Name);
}

bool TCaseEditor::SaveFile(const QString& FileName) {
    try {
        FCase->Save(FileName);
    } catch (const std::exception& E) {
        QMessageBox::critical(
            this, Tr("Save case"),
            Tr("The case could not be saved; the file is as it was:\n%1").arg(QString::fromUtf8(E.what())));
        return false;
    }
    FUpdated = false;
    FSaved = FCase->Snapshot();
    SetCurrentFile(FileName);
    AddRecent(FileName);
    Refresh();
    return true;
}

bool TCaseEditor::MayDiscard() {
    if (!isWindowModified()) return true;
    const auto Answer = QMessageBox::question(this, Tr("Unsaved changes"),
                                              Tr("The case has changes that are not saved. Save them?"),
                                              QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    if (Answer == QMessageBox::Save) return Save();
    return Answer == QMessageBox::Discard;
}

void TCaseEditor::closeEvent(QCloseEvent* E) {
    if (MayDiscard())
        E->accept();
    else
        E->ignore();
}

void TCaseEditor::Refresh() {
    const QStringList Now = FCase->Snapshot();
    const bool Changed = FUpdated || Now != FSaved;
    setWindowModified(Changed);
    FTree->clear();
    QFont Bold = FTree->font();
    Bold.setBold(true);
    for (TFieldForm* S : FCase->Sections()) {
        auto* Top = new QTreeWidgetItem(FTree, {S->windowTitle()});
        Top->setData(0, Qt::UserRole, S->IDstr());
        Top->setFont(0, Bold);
        for (auto& [Name, F] : TCase::Fields(S)) {
            const QString Line = TCase::FieldLine(S->IDstr(), Name, F);
            const bool FieldChanged = !FSaved.contains(Line);
            QString Value = F->GetValueText();
            // A numeric field's text is in the units it shows: say which.
            if (const auto* Edit = dynamic_cast<TCustomNumEdit*>(F); Edit && Edit->NumericType() == ntParType)
                Value += QLatin1Char(' ') + ParUnitStrOf(Edit->ParType(), Edit->UnitSystem());
            auto* Item = new QTreeWidgetItem(
                Top, {(FieldChanged ? QStringLiteral("\u25CF ") : QString()) + Name, Value});
            if (FieldChanged) Item->setToolTip(0, Tr("Changed since the case was opened or saved"));
        }
        Top->setExpanded(S->IDstr() != QStringLiteral("Compressor") &&
                         S->IDstr() != QStringLiteral("Mission"));
    }
}

void TCaseEditor::SetCurrentFile(const QString& FileName) {
    FFile = FileName;
    setWindowFilePath(FileName.isEmpty() ? Tr("untitled.xml") : FileName);
    setWindowTitle(QStringLiteral("%1[*] - %2")
                       .arg(FileName.isEmpty() ? Tr("untitled") : QFileInfo(FileName).fileName(),
                            Tr("QXNumCtrls case editor")));
}

void TCaseEditor::AddRecent(const QString& FileName) {
    QSettings Settings(QStringLiteral("QXNumCtrls"), QStringLiteral("CaseEditor"));
    QStringList Files = Settings.value(QStringLiteral("recentFiles")).toStringList();
    const QString Full = QFileInfo(FileName).absoluteFilePath();
    Files.removeAll(Full);
    Files.prepend(Full);
    while (Files.size() > MaxRecent)
        Files.removeLast();
    Settings.setValue(QStringLiteral("recentFiles"), Files);
    UpdateRecentMenu();
}

void TCaseEditor::UpdateRecentMenu() {
    FRecent->clear();
    const QSettings Settings(QStringLiteral("QXNumCtrls"), QStringLiteral("CaseEditor"));
    const QStringList Files = Settings.value(QStringLiteral("recentFiles")).toStringList();
    for (const QString& F : Files)
        FRecent
            ->addAction(QFileInfo(F).fileName(), this,
                        [this, F] {
                            if (MayDiscard()) OpenFile(F);
                        })
            ->setToolTip(F);
    FRecent->setEnabled(!Files.isEmpty());
}

} // namespace demo
