// Shared by the hostile-input test and the form fuzz target: a field form holding every field
// class, a grid and a frame with a field, in one of two states that differ in every value; and a
// snapshot of everything a read could change in a field.
#pragma once

#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>

#include <QDebug>
#include <QUndoCommand>
#include <QUndoStack>

#include <set>
#include <utility>
#include <vector>

namespace qxnum::test {

inline QString Dump(const QVariant& V) {
    QString S;
    QDebug(&S).nospace() << V;
    return S;
}

// Everything a file or a read could touch, one line per item. The undo history is left out where a
// successful read may clear it.
inline QStringList State(INumFld* F, bool WithUndo = true) {
    auto* Base = dynamic_cast<TFieldBase*>(F);
    QStringList S{
        QStringLiteral("visible %1 enabled %2").arg(Base->FieldVisible()).arg(Base->FieldEnabled())};
    auto* G = dynamic_cast<TNumGrid*>(F);
    if (!G) return S << Dump(F->GetVariantValue()) << F->GetValueText();
    S << QStringLiteral("%1 x %2, fixed %3 x %4, %5 columns")
             .arg(G->ColCount())
             .arg(G->RowCount())
             .arg(G->FixedCols())
             .arg(G->FixedRows())
             .arg(G->Columns()->Count());
    for (int R = 0; R < G->RowCount(); ++R)
        S << QStringLiteral("row %1: ").arg(R) + G->Rows(R).join(QLatin1Char('|'));
    for (int C = 0; C < G->Columns()->Count(); ++C) {
        const TNumColumn* Col = G->Columns()->Items(C);
        S << QStringLiteral("column %1: %2 %3 %4 \"%5\"")
                 .arg(C)
                 .arg(GetEnumName(Col->UnitSystem()), Col->StringCol() ? QStringLiteral("string") : QString(),
                      GetEnumName(Col->ParType()), Col->Title()->Caption());
    }
    if (WithUndo)
        S << QStringLiteral("undo %1 at %2").arg(G->UndoStack()->count()).arg(G->UndoStack()->index());
    return S;
}

// Two steps of a host's own on the history, one of them undone: a read must not lose them.
inline void AddHistory(TNumGrid& G) {
    G.UndoStack()->push(new QUndoCommand(QStringLiteral("host step 1")));
    G.UndoStack()->push(new QUndoCommand(QStringLiteral("host step 2")));
    G.UndoStack()->undo();
}

template <typename T> T* AddField(QWidget* Owner, const char* Name) {
    auto* W = new T(Owner);
    W->setObjectName(QString::fromLatin1(Name));
    return W;
}

// State K (1 or 2) of every value; the grid has a history of two steps.
struct TAllFieldsForm : TFieldForm {
    TNumFld* Num = AddField<TNumFld>(ClientArea(), "Num");
    TStringFld* Str = AddField<TStringFld>(ClientArea(), "Str");
    TMemoFld* Memo = AddField<TMemoFld>(ClientArea(), "Memo");
    TCheckFld* Check = AddField<TCheckFld>(ClientArea(), "Check");
    TRadioBtnFld* Radio = AddField<TRadioBtnFld>(ClientArea(), "Radio");
    TRadioGrpFld* Group = AddField<TRadioGrpFld>(ClientArea(), "Group");
    TCheckListBoxFld* List = AddField<TCheckListBoxFld>(ClientArea(), "List");
    TComboBoxFld* Combo = AddField<TComboBoxFld>(ClientArea(), "Combo");
    TDateTimePickerFld* Date = AddField<TDateTimePickerFld>(ClientArea(), "Date");
    TNumGrid* Grid = AddField<TNumGrid>(ClientArea(), "Grid");
    TFieldFrame* Frame = AddField<TFieldFrame>(ClientArea(), "Amb");
    TNumFld* FrameNum = AddField<TNumFld>(Frame, "T");
    // Each field with its XML ID (a frame's fields with the frame's name in front).
    std::vector<std::pair<INumFld*, QString>> Fields;
    // The fields whose read succeeded (OnAfterRead) since the caller last cleared it.
    std::set<INumFld*> Read;

    explicit TAllFieldsForm(int K) {
        setObjectName(QStringLiteral("All"));
        EndCode = FieldFormEndCode;
        for (TNumFld* F : {Num, FrameNum}) {
            F->SetMin(-1e6);
            F->SetMax(1e6);
        }
        Group->SetItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
        List->SetItems({QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("z")});
        Combo->addItems({QStringLiteral("one"), QStringLiteral("two")});
        Grid->SetColCount(3);
        Grid->SetRowCount(4);
        Grid->Columns()->Items(1)->SetParType(ptPress);
        FormCreate();
        Num->SetValue(K + 0.25L);
        Str->setText(QStringLiteral("s%1").arg(K));
        Memo->setPlainText(QStringLiteral("a%1\nb").arg(K));
        Check->setChecked(K % 2 != 0);
        Radio->setChecked(K % 2 == 0);
        Group->SetItemIndex(K);
        List->SetState(K, cbChecked);
        List->SetState(0, cbGrayed);
        Combo->setCurrentIndex(K % 2);
        Date->setDateTime(QDateTime(QDate(2020, 1, 1 + K), QTime(12, K)));
        for (int R = 1; R < 4; ++R)
            Grid->SetDValues(1, R, 1e5 * K + R);
        Grid->SetCells(2, 2, QStringLiteral("t%1").arg(K));
        FrameNum->SetValue(K * 3);
        AddHistory(*Grid);
        for (QWidget* W : std::initializer_list<QWidget*>{Num, Str, Memo, Check, Radio, Group, List, Combo,
                                                          Date, Grid, FrameNum}) {
            INumFld* F = Supports(W);
            Fields.emplace_back(F, (W == FrameNum ? QStringLiteral("Amb.") : QString()) + F->GetIDstring());
            dynamic_cast<TFieldBase*>(F)->SetOnAfterRead([this, F](QObject*) { Read.insert(F); });
        }
    }
    std::vector<QStringList> States(bool WithUndo = true) {
        std::vector<QStringList> S;
        for (const auto& [F, Id] : Fields)
            S.push_back(State(F, WithUndo));
        return S;
    }
};

} // namespace qxnum::test
