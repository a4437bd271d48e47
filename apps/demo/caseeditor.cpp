#include "caseeditor.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QUndoGroup>
#include <QUndoStack>
#include <QVBoxLayout>

#include <algorithm>

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

// Wanted, but no larger than the screen W is on (less room for a window frame): at a scale factor
// of 2 a 1000-pixel-high screen is 500 pixels high for the program.
QSize FitScreen(QSize Wanted, const QWidget* W) {
    const QScreen* Screen = W->screen() ? W->screen() : QGuiApplication::primaryScreen();
    if (!Screen) return Wanted;
    const QRect Avail = Screen->availableGeometry();
    return Wanted.boundedTo(QSize(Avail.width() - 16, Avail.height() - 48));
}

// Section N of the guide ("## N. Title" up to the next "## "), built into the program from
// docs/guide.md; empty when there is no guide or no such section.
QString GuideSection(int N, QString* Title = nullptr) {
    QFile File(QStringLiteral(":/demo/guide.md"));
    if (N <= 0 || !File.open(QIODevice::ReadOnly | QIODevice::Text)) return {};
    const QString Text = QLatin1Char('\n') + QString::fromUtf8(File.readAll());
    const QString Head = QStringLiteral("\n## %1. ").arg(N);
    const qsizetype Start = Text.indexOf(Head);
    if (Start < 0) return {};
    const qsizetype End = Text.indexOf(QStringLiteral("\n## "), Start + Head.size());
    const QString Section = Text.mid(Start + 1, End < 0 ? -1 : End - Start - 1);
    if (Title) *Title = Section.section(QLatin1Char('\n'), 0, 0).mid(3);
    return Section;
}

// The help handler: a section's Help button (its HelpContext is the guide's section number)
// shows that section of the guide over the dialog.
bool ShowGuide(int N) {
    QString Title;
    const QString Section = GuideSection(N, &Title);
    if (Section.isEmpty()) return false;
    QWidget* Over =
        QApplication::activeModalWidget() ? QApplication::activeModalWidget() : QApplication::activeWindow();
    QDialog Dlg(Over);
    Dlg.setWindowTitle(Tr("Guide: %1").arg(Title));
    auto* L = new QVBoxLayout(&Dlg);
    auto* Browser = new QTextBrowser(&Dlg);
    Browser->setOpenExternalLinks(true);
    Browser->setMarkdown(Section);
    L->addWidget(Browser);
    auto* Buttons = new QDialogButtonBox(QDialogButtonBox::Close, &Dlg);
    QObject::connect(Buttons, &QDialogButtonBox::rejected, &Dlg, &QDialog::reject);
    L->addWidget(Buttons);
    Dlg.resize(FitScreen(QSize(680, 560), &Dlg));
    Dlg.exec();
    return true;
}

QString CellText(const QString& S) {
    return QString(S).replace(QStringLiteral("\r\n"), QStringLiteral(" ")).simplified();
}

// A grid in the list: its size as the value, then its column titles and its first rows, cell
// texts as the grid shows them (check boxes as yes or no).
void AddGridItems(QTreeWidgetItem* Item, TNumGrid* Grid) {
    constexpr int ShownRows = 3;
    const int Rows = std::max(0, Grid->RowCount() - Grid->FixedRows());
    const int Cols = Grid->ColCount();
    Item->setText(1, (Rows == 1 ? Tr("1 row") : Tr("%1 rows").arg(Rows)) + QStringLiteral(" \u00D7 ") +
                         (Cols == 1 ? Tr("1 column") : Tr("%1 columns").arg(Cols)));
    const auto Line = [Grid, Cols](int R) {
        QStringList Cells;
        for (int C = 0; C < Cols; ++C) {
            const TNumColumn* Col = Grid->Columns()->Items(C);
            const QString S = Grid->Cells(C, R);
            Cells << (Col && Col->CheckBoxCol() && R >= Grid->FixedRows()
                          ? (TNumGrid::StringCheckedStatus(S) ? Tr("yes") : Tr("no"))
                          : CellText(S));
        }
        return Cells.join(QStringLiteral(" | "));
    };
    const auto Add = [Item](const QString& Name, const QString& Text) {
        (new QTreeWidgetItem(Item, {Name, Text}))->setToolTip(1, Text); // a long line is cut in the list
    };
    if (Grid->FixedRows() > 0 && Grid->RowCount() > 0) Add(Tr("Columns"), Line(0));
    for (int R = Grid->FixedRows(); R < Grid->RowCount() && R < Grid->FixedRows() + ShownRows; ++R)
        Add(Tr("Row %1").arg(R - Grid->FixedRows() + 1), Line(R));
    if (Rows > ShownRows)
        new QTreeWidgetItem(Item, {QStringLiteral("\u2026"), Rows - ShownRows == 1
                                                                 ? Tr("1 more row")
                                                                 : Tr("%1 more rows").arg(Rows - ShownRows)});
    Item->setExpanded(true);
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
    auto* Hint = new QLabel(Tr("Double-click a section (or press Enter on it) to edit it. Changed fields are "
                               "marked with \u25CF until the case is saved."),
                            Central);
    Hint->setWordWrap(true);
    L->addWidget(Hint);
    L->addWidget(FTree);
    setCentralWidget(Central);
    FUndo = new QUndoGroup(this);
    connect(qApp, &QApplication::focusChanged, FUndo, [this](QWidget*, QWidget*) {
        if (TNumGrid* G = FocusedGrid()) FUndo->setActiveStack(G->UndoStack());
    });
    MakeMenus();
    resize(FitScreen(QSize(760, 620), this));
    FPreviousHelp = SetHelpHandler(ShowGuide);
    NewCase();
}

TCaseEditor::~TCaseEditor() {
    SetHelpHandler(FPreviousHelp);
}

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
    Section->resize(FitScreen(Section->size(), Section));
    const int Result = Section->exec();
    Refresh();
    return Result;
}

void TCaseEditor::SetUnits(TUnitSystem U) {
    // The texts change with the units, the values do not: a field that was as saved before the
    // switch is as saved after it, so its saved line follows it into the new units. A changed
    // field keeps its saved line and stays marked.
    const QStringList Before = FCase->Snapshot();
    FCase->SetUnitSystem(U);
    const QStringList After = FCase->Snapshot();
    for (qsizetype I = 0; I < Before.size() && I < After.size(); ++I) {
        const qsizetype Saved = FSaved.indexOf(Before[I]);
        if (Saved >= 0) FSaved[Saved] = After[I];
    }
    FUnits->actions().at(U == usImperial ? 1 : 0)->setChecked(true);
    Refresh();
}

QStringList TCaseEditor::ChangedFields() const {
    QStringList Out;
    for (const QString& Line : FCase->Snapshot())
        if (!FSaved.contains(Line)) Out << Line.section(QLatin1Char('='), 0, 0);
    return Out;
}

void TCaseEditor::MarkSaved() {
    FSaved = FCase->Snapshot();
    FSavedUnits = FCase->UnitSystem();
}

void TCaseEditor::NewCase() {
    // A new case is a new set of sections: each as its constructor makes it.
    FCase = std::make_unique<TCase>(this);
    for (TFieldForm* S : FCase->Sections()) {
        for (TNumGrid* G : S->findChildren<TNumGrid*>())
            FUndo->addStack(G->UndoStack());
        // Each section's HelpContext is its section of the guide; without one, no Help button.
        S->HelpBtn()->setVisible(!GuideSection(S->HelpContext()).isEmpty());
    }
    SetUnits(usSI);
    FUpdated = false;
    MarkSaved();
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
    MarkSaved();
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
    MarkSaved();
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
    const bool Changed = FUpdated || Now != FSaved || FCase->UnitSystem() != FSavedUnits;
    setWindowModified(Changed);
    // The list is made anew; what the user opened, selected and scrolled to stays.
    QHash<QString, bool> Expanded;
    for (int I = 0; I < FTree->topLevelItemCount(); ++I) {
        const QTreeWidgetItem* Top = FTree->topLevelItem(I);
        Expanded.insert(Top->data(0, Qt::UserRole).toString(), Top->isExpanded());
    }
    const int Scrolled = FTree->verticalScrollBar()->value();
    QString Current;
    if (const QTreeWidgetItem* Item = FTree->currentItem())
        Current = (Item->parent() ? Item->parent()->data(0, Qt::UserRole).toString() + QLatin1Char('/')
                                  : QString()) +
                  Item->data(0, Qt::UserRole).toString();
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
            auto* Item =
                new QTreeWidgetItem(Top, {(FieldChanged ? QStringLiteral("\u25CF ") : QString()) + Name});
            Item->setData(0, Qt::UserRole, Name);
            if (Current == S->IDstr() + QLatin1Char('/') + Name) FTree->setCurrentItem(Item);
            if (FieldChanged) Item->setToolTip(0, Tr("Changed since the case was opened or saved"));
            if (auto* Grid = dynamic_cast<TNumGrid*>(F)) {
                AddGridItems(Item, Grid);
                continue;
            }
            QString Value = F->GetValueText();
            // A numeric field's text is in the units it shows: say which.
            if (const auto* Edit = dynamic_cast<TCustomNumEdit*>(F); Edit && Edit->NumericType() == ntParType)
                Value += QLatin1Char(' ') + ParUnitStrOf(Edit->ParType(), Edit->UnitSystem());
            Item->setText(1, Value);
        }
        if (Current == S->IDstr()) FTree->setCurrentItem(Top);
        Top->setExpanded(Expanded.value(S->IDstr(), S->IDstr() != QStringLiteral("Compressor") &&
                                                        S->IDstr() != QStringLiteral("Mission")));
    }
    FTree->verticalScrollBar()->setValue(Scrolled);
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
