// The grid's columns: setter rules, value <-> text conversion and the unit-system change.
#include "numcolumn_p.h"
#include "numgrid_p.h"

#include <qxnum/numconv.h>
#include <qxnum/numtext.h>

#include <QApplication>
#include <QMenu>
#include <QPalette>

#include <cmath>

namespace qxnum {

namespace {

constexpr Extended Tolerance = 1e-14L;

} // namespace

// ---- TNumColTitle --------------------------------------------------------------------------------

TNumColTitle::TNumColTitle(TNumColumn* Column) : QObject(Column), d(std::make_unique<TNumColTitlePrivate>()) {
    d->FColumn = Column;
    d->FFont = DefaultFont();
    // Deliberately centred, although DefaultAlignment says left.
    d->FAlignment = taCenter;
    d->FCaption = DefaultCaption();
}

TNumColTitle::~TNumColTitle() = default;

TNumColumn* TNumColTitle::Column() const {
    return d->FColumn;
}
TAlignment TNumColTitle::Alignment() const {
    return d->FAlignment;
}
QString TNumColTitle::Caption() const {
    return d->FCaption;
}
QColor TNumColTitle::Color() const {
    return d->FColor;
}
QFont TNumColTitle::Font() const {
    return d->FFont;
}

void TNumColTitle::SetAlignment(TAlignment AValue) {
    if (AValue != d->FAlignment) d->FAlignment = AValue;
    d->FColumn->Changed();
    if (TNumGrid* G = d->FColumn->Grid()) G->GridStringsChanged(this);
}

void TNumColTitle::SetColor(const QColor& AValue) {
    if (AValue != d->FColor) d->FColor = AValue;
    d->FColumn->Changed();
    if (TNumGrid* G = d->FColumn->Grid()) G->GridStringsChanged(this);
}

void TNumColTitle::SetFont(const QFont& AValue) {
    d->FFont = AValue;
    if (TNumGrid* G = d->FColumn->Grid()) G->GridStringsChanged(this);
}

void TNumColTitle::SetCaption(const QString& AValue) {
    if (AValue == d->FCaption) return;
    d->FCaption = AValue;
    if (TNumGrid* G = d->FColumn->Grid()) G->ResetTitles();
}

TAlignment TNumColTitle::DefaultAlignment() const {
    return taLeftJustify;
}

QColor TNumColTitle::DefaultColor() const {
    if (TNumGrid* G = d->FColumn->Grid()) return G->FixedColor();
    return QApplication::palette().color(QPalette::Button);
}

QFont TNumColTitle::DefaultFont() const {
    if (TNumGrid* G = d->FColumn->Grid()) return G->TitleFont();
    return d->FColumn->Font();
}

QString TNumColTitle::DefaultCaption() const {
    const TNumGrid* G = d->FColumn->Grid();
    const int Lines = G ? G->TitleLineCount() : 1;
    QString S;
    for (int L = 1; L <= Lines; ++L) {
        if (L > 1) S += QStringLiteral("\r\n");
        S += QStringLiteral("Title %1,%2").arg(d->FColumn->Index()).arg(L);
    }
    return S;
}

void TNumColTitle::Assign(const TNumColTitle& Source) {
    if (&Source == this) return;
    d->FAlignment = Source.d->FAlignment;
    d->FColor = Source.d->FColor;
    SetCaption(Source.d->FCaption);
    SetFont(Source.d->FFont);
}

// ---- TNumColumn ----------------------------------------------------------------------------------

TNumColumn::TNumColumn(TNumColumns* Collection)
    : QObject(Collection), d(std::make_unique<TNumColumnPrivate>()) {
    d->FCollection = Collection;
    if (TNumGrid* G = Grid()) {
        d->FFont = G->font();
        d->FWidth = G->DefaultColWidth();
    }
    d->FImeName = DefaultImeName();
}

TNumColumn::~TNumColumn() = default;

TNumGrid* TNumColumn::Grid() const {
    return d->FCollection ? d->FCollection->Grid() : nullptr;
}
TNumColumns* TNumColumn::Collection() const {
    return d->FCollection;
}

int TNumColumn::Index() const {
    return d->FCollection ? d->FIndex : -1;
}

TNumColTitle* TNumColumn::CreateTitle() {
    auto* T = new TNumColTitle(this);
    if (TNumGrid* G = Grid()) T->d->FColor = G->FixedColor();
    return T;
}

void TNumColumn::Changed(bool AllItems) {
    if (!d->FCollection || d->FCollection->d->FUpdateCount > 0) return;
    d->FCollection->Update(AllItems ? nullptr : this);
}

namespace {

void StringsChanged(TNumColumnPrivate* P, TNumColumn* C) {
    ++P->Stamp;
    if (TNumGrid* G = C->Grid()) G->GridStringsChanged(C);
}

} // namespace

TAlignment TNumColumn::Alignment() const {
    return d->FAlignment;
}
void TNumColumn::SetAlignment(TAlignment AValue) {
    if (AValue != d->FAlignment) {
        d->FAlignment = AValue;
        StringsChanged(d.get(), this);
    }
    Changed();
}

QColor TNumColumn::Color() const {
    return d->FColor.isValid() ? d->FColor : DefaultColor();
}
void TNumColumn::SetColor(const QColor& AValue) {
    if (AValue != d->FColor) {
        d->FColor = AValue;
        StringsChanged(d.get(), this);
    }
    Changed();
}

QFont TNumColumn::Font() const {
    return d->FFont;
}
void TNumColumn::SetFont(const QFont& AValue) {
    d->FFont = AValue;
    Changed();
    StringsChanged(d.get(), this);
}

TImeMode TNumColumn::ImeMode() const {
    return d->FImeMode;
}
void TNumColumn::SetImeMode(TImeMode AValue) {
    // Compared with the default, not with the stored value: the grid's own mode is never stored.
    if (AValue != DefaultImeMode()) {
        d->FImeMode = AValue;
        StringsChanged(d.get(), this);
    }
    Changed();
}

QString TNumColumn::ImeName() const {
    return d->FImeName;
}
void TNumColumn::SetImeName(const QString& AValue) {
    if (AValue != DefaultImeName()) {
        d->FImeName = AValue;
        StringsChanged(d.get(), this);
    }
    Changed();
}

QMenu* TNumColumn::PopupMenu() const {
    return d->FPopupMenu;
}
void TNumColumn::SetPopupMenu(QMenu* AValue) {
    d->FPopupMenu = AValue;
}

bool TNumColumn::ReadOnly() const {
    return d->FReadonly;
}
void TNumColumn::SetReadOnly(bool AValue) {
    if (AValue != d->FReadonly) d->FReadonly = AValue;
    Changed();
}

TNumColTitle* TNumColumn::Title() const {
    return d->FTitle;
}
void TNumColumn::SetTitle(const TNumColTitle& AValue) {
    if (d->FTitle) d->FTitle->Assign(AValue);
    StringsChanged(d.get(), this);
}

int TNumColumn::Width() const {
    return d->FVisible ? d->FWidth : -1;
}
void TNumColumn::SetWidth(int AValue) {
    if (AValue == -1) return;
    d->FWidth = AValue;
    Changed();
    StringsChanged(d.get(), this);
}

bool TNumColumn::Visible() const {
    return d->FVisible;
}
void TNumColumn::SetVisible(bool AValue) {
    if (AValue == d->FVisible) return;
    d->FVisible = AValue;
    Changed();
    if (TNumGrid* G = Grid()) G->viewport()->update();
}

quint16 TNumColumn::Decimals() const {
    return d->FDecimals;
}
void TNumColumn::SetDecimals(quint16 AValue) {
    if (AValue == d->FDecimals) return;
    d->FDecimals = IsIntegerDataType(d->FDataType) ? quint16(0) : AValue;
    StringsChanged(d.get(), this);
    Changed();
}

quint16 TNumColumn::Digits() const {
    return d->FDigits;
}
void TNumColumn::SetDigits(quint16 AValue) {
    if (AValue == d->FDigits) return;
    d->FDigits = AValue;
    StringsChanged(d.get(), this);
    Changed();
}

Extended TNumColumn::Max() const {
    return d->FMax;
}
void TNumColumn::SetMax(Extended AValue) {
    if (AValue == d->FMax) return;
    ++d->Stamp;
    d->FMax = AValue;
    if (d->FMin > d->FMax) d->FMax = d->FMin;
    Changed();
}

Extended TNumColumn::Min() const {
    return d->FMin;
}
void TNumColumn::SetMin(Extended AValue) {
    if (AValue == d->FMin) return;
    ++d->Stamp;
    d->FMin = AValue;
    if (d->FMin > d->FMax) d->FMin = d->FMax;
    Changed();
}

void TNumColumn::SetRange(Extended AMin, Extended AMax) {
    ++d->Stamp;
    d->FMin = AMin;
    d->FMax = AMax < AMin ? AMin : AMax;
    Changed();
}

TDataType TNumColumn::DataType() const {
    return d->FDataType;
}
void TNumColumn::SetDataType(TDataType AValue) {
    if (AValue == d->FDataType) return;
    d->FDataType = AValue;
    if (AValue != dtExtended) d->FParType = ptNone;
    if (IsIntegerDataType(AValue)) {
        d->FNumericType = ntGeneral;
        d->FDecimals = 0;
    }
    StringsChanged(d.get(), this);
    Changed();
}

TNumericType TNumColumn::NumericType() const {
    return d->FNumericType;
}
void TNumColumn::SetNumericType(TNumericType AValue) {
    if (AValue == d->FNumericType) return;
    const bool Float = d->FDataType == dtDouble || d->FDataType == dtExtended || d->FDataType == dtSingle;
    d->FNumericType = Float ? AValue : ntGeneral;
    if (AValue != ntParType) d->FParType = ptNone;
    StringsChanged(d.get(), this);
    Changed();
}

TParType TNumColumn::ParType() const {
    return d->FParType;
}
void TNumColumn::SetParType(TParType AValue) {
    if (AValue == d->FParType) return;
    d->FParType = AValue;
    if (AValue != ptNone) {
        d->FNumericType = ntParType;
        d->FDataType = dtExtended;
    }
    StringsChanged(d.get(), this);
    Changed();
}

Extended TNumColumn::CustomScale() const {
    return d->FCustomScale;
}
void TNumColumn::SetCustomScale(Extended AValue) {
    // A (nearly) zero scale would divide by zero in the text hook.
    if (AValue == d->FCustomScale || !(std::fabs(AValue) > Tolerance)) return;
    d->FCustomScale = AValue;
    StringsChanged(d.get(), this);
    Changed();
}

Extended TNumColumn::ScaleOffset() const {
    return d->FScaleOffset;
}
void TNumColumn::SetScaleOffset(Extended AValue) {
    if (AValue == d->FScaleOffset) return;
    d->FScaleOffset = AValue;
    StringsChanged(d.get(), this);
    Changed();
}

QString TNumColumn::CustomFormat() const {
    return d->Fcustomformat;
}
void TNumColumn::SetCustomFormat(const QString& AValue) {
    if (AValue == d->Fcustomformat) return;
    d->Fcustomformat = AValue;
    StringsChanged(d.get(), this);
    Changed(true);
}

QString TNumColumn::CustomUnitStr() const {
    return d->Fcustomunitstr;
}
void TNumColumn::SetCustomUnitStr(const QString& AValue) {
    if (AValue == d->Fcustomunitstr) return;
    d->Fcustomunitstr = AValue;
    if (TNumGrid* G = Grid()) G->ResetTitles();
}

bool TNumColumn::TrimZeroes() const {
    return d->FTrimZeroes;
}
void TNumColumn::SetTrimZeroes(bool AValue) {
    if (AValue == d->FTrimZeroes) return;
    d->FTrimZeroes = AValue;
    StringsChanged(d.get(), this);
    Changed();
}

bool TNumColumn::StringCol() const {
    return d->FStringCol;
}
void TNumColumn::SetStringCol(bool AValue) {
    if (AValue == d->FStringCol) return;
    ++d->Stamp;
    d->FStringCol = AValue;
    if (TNumGrid* G = Grid()) G->InitCol(Index());
}

bool TNumColumn::CheckBoxCol() const {
    return d->FCheckBoxCol;
}
void TNumColumn::SetCheckBoxCol(bool AValue) {
    if (AValue == d->FCheckBoxCol) return;
    ++d->Stamp;
    d->FCheckBoxCol = AValue;
    if (AValue) d->FStringCol = true;
    if (TNumGrid* G = Grid()) G->InitCol(Index());
}

QString TNumColumn::DefaultStr() const {
    return d->FDefaultStr;
}
void TNumColumn::SetDefaultStr(const QString& AValue) {
    if (d->FStringCol) {
        d->FDefaultStr = AValue;
        return;
    }
    // Kept normalised: the default of a numeric column is a number in the column's format.
    d->FDefaultStr = ValueString(QX_StrToFloatDef(AValue, 0.0L), d->FDataType, d->FNumericType, d->FDigits,
                                 d->FDecimals, d->FParType, d->FUnitSystem, d->Fcustomformat, d->FCustomScale,
                                 d->FScaleOffset, false, d->FTrimZeroes, NumInpFormatSettings);
}

bool TNumColumn::Validate() const {
    return d->FValidate;
}
void TNumColumn::SetValidate(bool AValue) {
    d->FValidate = AValue;
}
int TNumColumn::Tag() const {
    return d->FTag;
}
void TNumColumn::SetTag(int AValue) {
    d->FTag = AValue;
}
bool TNumColumn::AutoReformat() const {
    return d->FAutoReformat;
}
void TNumColumn::SetAutoReformat(bool AValue) {
    ++d->Stamp;
    d->FAutoReformat = AValue;
}

TNotifyEvent TNumColumn::OnUnitSystemChange() const {
    return d->FOnUnitSystemChange;
}
void TNumColumn::SetOnUnitSystemChange(TNotifyEvent AEvent) {
    d->FOnUnitSystemChange = std::move(AEvent);
}
TGetColNumTextEvent TNumColumn::OnGetNumtext() const {
    return d->FOnGetNumText;
}
void TNumColumn::SetOnGetNumtext(TGetColNumTextEvent AEvent) {
    ++d->Stamp;
    d->FOnGetNumText = std::move(AEvent);
}
TSetColNumValueEvent TNumColumn::OnSetNumValue() const {
    return d->FOnSetNumValue;
}
void TNumColumn::SetOnSetNumValue(TSetColNumValueEvent AEvent) {
    ++d->Stamp;
    d->FOnSetNumValue = std::move(AEvent);
}
TOnCheckVariableEvent TNumColumn::OnExprCheckVariable() const {
    return d->FOnExprCheckVariable;
}
void TNumColumn::SetOnExprCheckVariable(TOnCheckVariableEvent AEvent) {
    ++d->Stamp;
    d->FOnExprCheckVariable = std::move(AEvent);
}

bool TNumColumn::UnitSystemSet() const {
    return d->UnitSystemSet;
}

TUnitSystem TNumColumn::UnitSystem() const {
    return d->FUnitSystem;
}

void TNumColumn::SetUnitSystem(TUnitSystem AValue) {
    TNumGrid* G = Grid();
    const bool Rewrite = G && d->UnitSystemSet && d->HoldsValues();
    std::vector<Extended> Values;
    const int C = Index();
    int First = 0, Last = -1;
    TNumGridPrivate* GD = G ? G->Priv() : nullptr;
    if (Rewrite) {
        // Every data cell's value under the old unit system: the held value where the cell has one
        // (deliberate deviation 4: a switch re-expresses it, so switching back gives it exactly),
        // otherwise its text read once, as the original reads it.
        First = G->FixedRows();
        Last = G->RowCount() - 1;
        Values.resize(static_cast<size_t>(std::max(0, Last - First + 1)));
        for (int R = First; R <= Last; ++R) {
            const TCell& Cell = GD->Store.At(C, R);
            bool Ok = true;
            Extended V = Cell.HasValue() ? Cell.Value() : d->ParseBase(Cell.Text(), Ok);
            d->Clamp(V);
            if (d->FOnSetNumValue) d->FOnSetNumValue(this, R, Cell.Text(), V);
            Values[static_cast<size_t>(R - First)] = V;
        }
    }
    d->FUnitSystem = AValue;
    ++d->Stamp;
    if (d->FOnUnitSystemChange) d->FOnUnitSystemChange(this);
    if (Rewrite) {
        for (int R = First; R <= Last; ++R) {
            const Extended V = Values[static_cast<size_t>(R - First)];
            GD->Store.Put(C, R, GetValueString(R, V, true), V);
        }
        // Every cell was just written from its checked value: the check that follows the change
        // has nothing left to do.
        if (d->ChecksRepeatable()) {
            d->CheckedVersion = GD->Store.ColumnVersion(C);
            d->CheckedStamp = d->Stamp;
        }
        GD->CellsChanged();
    }
    d->UnitSystemSet = true;
    Changed();
}

TAlignment TNumColumn::DefaultAlignment() const {
    return taLeftJustify;
}

QColor TNumColumn::DefaultColor() const {
    if (TNumGrid* G = Grid()) return G->palette().color(QPalette::Base);
    return QApplication::palette().color(QPalette::Window);
}

QFont TNumColumn::DefaultFont() const {
    if (TNumGrid* G = Grid()) return G->font();
    return d->FFont;
}

TImeMode TNumColumn::DefaultImeMode() const {
    return Grid() ? imDontCare : d->FImeMode;
}
QString TNumColumn::DefaultImeName() const {
    return Grid() ? QString() : d->FImeName;
}

bool TNumColumn::DefaultReadOnly() const {
    if (TNumGrid* G = Grid()) return !G->Options().testFlag(goEditing);
    return false;
}

void TNumColumn::RefreshDefaultFont() {
    d->FFont = DefaultFont();
}

QString TNumColumn::TitleString() const {
    // Trimmed as a whole: no unit gives no trailing line break, no caption no leading one.
    const QString Caption = d->FTitle ? d->FTitle->Caption() : QString();
    return (Caption + QStringLiteral("\r\n") + UnitString()).trimmed();
}

QString TNumColumn::UnitString() const {
    if (!d->Fcustomunitstr.isEmpty()) return d->Fcustomunitstr;
    return ParUnitStrOf(d->FParType, d->FUnitSystem);
}

Extended TNumColumn::Scale() const {
    return d->FCustomScale * static_cast<Extended>(ParScaleOf(d->FParType, d->FUnitSystem));
}

QString TNumColumn::GetValueString(int ARow, Extended Value, bool Scaled) {
    QString Text = ValueString(Value, d->FDataType, d->FNumericType, d->FDigits, d->FDecimals, d->FParType,
                               d->FUnitSystem, d->Fcustomformat, d->FCustomScale, d->FScaleOffset, Scaled,
                               d->FTrimZeroes, NumInpFormatSettings);
    if (d->FOnGetNumText)
        d->FOnGetNumText(this, ARow, Value, Value / d->FCustomScale + d->FScaleOffset, Text);
    return Text;
}

void TNumColumn::SetValuefromStr(int ARow, const QString& Text, Extended& Value, bool Scaled) {
    if (d->FOnExprCheckVariable) {
        const QString T = Text.trimmed();
        if (T.isEmpty()) {
            Value = 0.0L;
        } else {
            Extended V = 0.0L;
            if (TryQX_StrToFloat(T, V)) {
                Value = V;
            } else {
                Value = 0.0L;
                TNumGrid* G = Grid();
                if (!G || !G->IsUpdating()) {
                    TQXParser Parser(G);
                    Parser.SetDescription((G ? G->objectName() : QString()) +
                                          QStringLiteral(" expression in ") +
                                          (d->FTitle ? d->FTitle->Caption() : QString()));
                    Parser.SetOnCheckVariable(d->FOnExprCheckVariable);
                    Parser.SetExpression(T);
                    Value = Parser.CalcValue();
                }
            }
            if (Scaled) {
                if (d->FNumericType == ntParType)
                    Value = Value * static_cast<Extended>(ParScaleOf(d->FParType, d->FUnitSystem));
                Value = (Value - d->FScaleOffset) * d->FCustomScale;
            }
        }
    } else if (Scaled) {
        bool Ok = true;
        Value = d->ParseBase(Text, Ok);
    } else {
        Value = QX_StrToFloat(Text);
    }
    d->Clamp(Value);
    if (d->FOnSetNumValue) d->FOnSetNumValue(this, ARow, Text, Value);
}

Extended TNumColumnPrivate::ParseBase(const QString& Text, bool& Ok) const {
    Extended V = 0.0L;
    Ok = TryQX_StrToFloat(Text, V);
    if (!Ok) V = 0.0L;
    if (FNumericType == ntParType) V = V * static_cast<Extended>(ParScaleOf(FParType, FUnitSystem));
    return (V - FScaleOffset) * FCustomScale;
}

void TNumColumnPrivate::Clamp(Extended& Value) const {
    if (FMax - FMin > Tolerance) {
        if (Value < FMin)
            Value = FMin;
        else if (Value > FMax)
            Value = FMax;
    }
}

Extended TNumColumn::DValues(int ARow) {
    TNumGrid* G = Grid();
    Extended V = 0.0L;
    if (G && G->GetValueFromCell(Index(), ARow, V, true)) return V;
    return 0.0L;
}

void TNumColumn::SetDValues(int ARow, Extended Value) {
    if (TNumGrid* G = Grid()) G->SetDValues(Index(), ARow, Value);
}

int TNumColumn::IntValues(int ARow) {
    TNumGrid* G = Grid();
    return G ? G->GetIntValues(Index(), ARow) : 0;
}

void TNumColumn::SetIntValues(int ARow, int Value) {
    if (TNumGrid* G = Grid()) G->SetCells(Index(), ARow, QString::number(Value));
}

void TNumColumn::Assign(const TNumColumn& S) {
    if (&S == this) return;
    ++d->Stamp;
    if (d->FCollection) d->FCollection->BeginUpdate();
    d->FColor = S.d->FColor;
    if (S.Width() != -1) d->FWidth = S.Width();
    d->FFont = S.d->FFont;
    d->FImeMode = S.d->FImeMode;
    d->FImeName = S.d->FImeName;
    d->FAlignment = S.d->FAlignment;
    d->FReadonly = S.d->FReadonly;
    if (d->FTitle && S.d->FTitle) d->FTitle->Assign(*S.d->FTitle);
    d->FPopupMenu = S.d->FPopupMenu;
    d->FVisible = S.d->FVisible;
    d->FDecimals = S.d->FDecimals;
    d->FDigits = S.d->FDigits;
    d->FMax = S.d->FMax;
    d->FMin = S.d->FMin;
    d->FDataType = S.d->FDataType;
    d->FNumericType = S.d->FNumericType;
    d->FParType = S.d->FParType;
    d->FUnitSystem = S.d->FUnitSystem;
    d->FCustomScale = S.d->FCustomScale;
    d->FScaleOffset = S.d->FScaleOffset;
    d->Fcustomformat = S.d->Fcustomformat;
    d->Fcustomunitstr = S.d->Fcustomunitstr;
    d->FStringCol = S.d->FStringCol;
    d->FCheckBoxCol = S.d->FCheckBoxCol;
    d->FValidate = S.d->FValidate;
    d->FTrimZeroes = S.d->FTrimZeroes;
    if (d->FCollection) {
        d->FCollection->EndUpdate();
        d->FCollection->Update(this);
    }
}

// ---- TNumColumns ---------------------------------------------------------------------------------

TNumColumns::TNumColumns(TNumGrid* Grid, TNumColumnFactory ColumnClass)
    : QObject(Grid), d(std::make_unique<TNumColumnsPrivate>()) {
    d->FGrid = Grid;
    d->FFactory = std::move(ColumnClass);
}

TNumColumns::~TNumColumns() {
    Clear();
}

TNumGrid* TNumColumns::Grid() const {
    return d->FGrid;
}
int TNumColumns::Count() const {
    return static_cast<int>(d->FItems.size());
}

TNumColumn* TNumColumns::Items(int Index) const {
    if (Index < 0 || Index >= Count()) return nullptr;
    return d->FItems[static_cast<size_t>(Index)];
}

void TNumColumns::SetItems(int Index, const TNumColumn& Value) {
    if (TNumColumn* C = Items(Index)) C->Assign(Value);
}

TNumColumn* TNumColumns::Add() {
    return Insert(Count());
}

TNumColumn* TNumColumns::Insert(int Index) {
    Index = std::clamp(Index, 0, Count());
    TNumColumn* C = d->FFactory ? d->FFactory(this) : new TNumColumn(this);
    C->setParent(this);
    C->d->FCollection = this;
    d->FItems.insert(d->FItems.begin() + Index, C);
    for (size_t I = static_cast<size_t>(Index); I < d->FItems.size(); ++I)
        d->FItems[I]->d->FIndex = static_cast<int>(I);
    // The title is made once the column knows its place, so that a derived CreateTitle is called.
    C->d->FTitle = C->CreateTitle();
    if (d->FGrid) {
        C->d->FWidth = d->FGrid->DefaultColWidth();
        // The cells do not move with the descriptions: the column that gains its cells is the last
        // one, and only when the grid already has it.
        const int Last = Count() - 1;
        if (Last < d->FGrid->ColCount()) d->FGrid->InitCol(Last);
    }
    return C;
}

void TNumColumns::Delete(int Index) {
    if (Index < 0 || Index >= Count()) return;
    TNumColumn* C = d->FItems[static_cast<size_t>(Index)];
    d->FItems.erase(d->FItems.begin() + Index);
    for (size_t I = static_cast<size_t>(Index); I < d->FItems.size(); ++I)
        d->FItems[I]->d->FIndex = static_cast<int>(I);
    C->d->FIndex = -1;
    delete C;
}

void TNumColumns::Clear() {
    std::vector<TNumColumn*> Items;
    Items.swap(d->FItems);
    for (TNumColumn* C : Items) {
        C->d->FIndex = -1;
        delete C;
    }
}

void TNumColumns::BeginUpdate() {
    ++d->FUpdateCount;
}

void TNumColumns::EndUpdate() {
    if (d->FUpdateCount > 0) --d->FUpdateCount;
    if (d->FUpdateCount == 0) Update(nullptr);
}

void TNumColumns::Update(TNumColumn* Item) {
    TNumGrid* G = d->FGrid;
    if (!Item || !G) return;
    // Only the changed column is re-titled and checked; inside the grid's own BeginUpdate the
    // EndUpdate that closes it does that.
    const bool Outer = G->IsUpdating();
    G->BeginUpdate();
    const int I = Item->Index();
    if (I >= 0 && I < G->ColCount()) G->SetColWidths(I, Item->Width());
    if (Outer) return;
    G->Priv()->Updating = false;
    G->Priv()->CatchUpView();
    G->GridStringsChanged(Item);
}

} // namespace qxnum
