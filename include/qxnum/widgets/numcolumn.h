/// \file
/// The columns of the numeric grid: one TNumColumn per grid column (fixed columns included), each
/// with a TNumColTitle, kept in the grid's TNumColumns.
///
/// A column says how the text of its cells is read as a number and written back: storage data
/// type, display form, parameter type and unit system, custom scale and offset, limits, and whether
/// its cells are free text or check boxes. The cells themselves belong to the grid; a column holds
/// no cell data.
///
/// Coupled properties correct each other in their setters (ParType forces ntParType and
/// dtExtended, an integer DataType forces ntGeneral, no decimals and ptNone, a limit that crosses
/// the other yields). Assign copies the raw fields without those rules, as the file readers do.
///
/// Unit system: the first SetUnitSystem only records the unit system (a form being loaded sets it
/// before its cells arrive); every later one re-expresses the column's numeric cells in the new
/// units. String columns and expression columns are never rewritten.
///
/// Columns are created only through their grid's collection (TNumColumns::Add or Insert); a host
/// that wants its own column class passes a factory to TNumColumns.
#pragma once

#include <qxnum/enums.h>
#include <qxnum/parser.h>
#include <qxnum/widgets/numedit.h>
#include <qxnum/widgets_export.h>

#include <QColor>
#include <QFont>
#include <QMenu>
#include <QObject>

#include <functional>
#include <memory>

namespace qxnum {

class TNumGrid;
class TNumColumn;
class TNumColumns;
class TNumColTitlePrivate;
class TNumColumnPrivate;
class TNumColumnsPrivate;

/// Value-to-text hook of a column: AScaledValue is Value / CustomScale + ScaleOffset (without the
/// unit system factor); NumText holds the formatted text and may be replaced.
using TGetColNumTextEvent =
    std::function<void(QObject* Sender, int ARow, Extended AValue, Extended AScaledValue, QString& NumText)>;
/// Text-to-value hook of a column: AValue holds the value read (in base units when scaled).
using TSetColNumValueEvent =
    std::function<void(QObject* Sender, int ARow, const QString& NumText, Extended& AValue)>;

/// The title of one column: caption (lines separated by `"\r\n"`), font, background and alignment.
class QXNUM_WIDGETS_EXPORT TNumColTitle : public QObject {
    Q_OBJECT
    Q_PROPERTY(qxnum::TAlignment Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QColor Color READ Color WRITE SetColor)
    Q_PROPERTY(QFont Font READ Font WRITE SetFont)

public:
    explicit TNumColTitle(TNumColumn* Column);
    ~TNumColTitle() override;

    TNumColumn* Column() const;
    TAlignment Alignment() const;
    void SetAlignment(TAlignment AValue);
    QString Caption() const;
    void SetCaption(const QString& AValue);
    QColor Color() const;
    void SetColor(const QColor& AValue);
    QFont Font() const;
    void SetFont(const QFont& AValue);

    TAlignment DefaultAlignment() const;
    QColor DefaultColor() const;
    QFont DefaultFont() const;
    /// "Title <index>,<line>" for each of the grid's title lines, joined by `"\r\n"`.
    QString DefaultCaption() const;

    void Assign(const TNumColTitle& Source);

private:
    friend class TNumColumn;
    friend class TNumGrid;
    const std::unique_ptr<TNumColTitlePrivate> d;
};

class QXNUM_WIDGETS_EXPORT TNumColumn : public QObject {
    Q_OBJECT
    Q_PROPERTY(qxnum::TAlignment Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(QColor Color READ Color WRITE SetColor)
    Q_PROPERTY(QFont Font READ Font WRITE SetFont)
    Q_PROPERTY(qxnum::TImeMode ImeMode READ ImeMode WRITE SetImeMode)
    Q_PROPERTY(QString ImeName READ ImeName WRITE SetImeName)
    Q_PROPERTY(QMenu* PopupMenu READ PopupMenu WRITE SetPopupMenu)
    Q_PROPERTY(bool ReadOnly READ ReadOnly WRITE SetReadOnly)
    Q_PROPERTY(qxnum::TNumColTitle* Title READ Title WRITE SetTitle)
    Q_PROPERTY(int Width READ Width WRITE SetWidth)
    Q_PROPERTY(bool Visible READ Visible WRITE SetVisible)
    Q_PROPERTY(quint16 Decimals READ Decimals WRITE SetDecimals)
    Q_PROPERTY(quint16 Digits READ Digits WRITE SetDigits)
    Q_PROPERTY(double Max READ PropMax WRITE SetPropMax)
    Q_PROPERTY(double Min READ PropMin WRITE SetPropMin)
    Q_PROPERTY(qxnum::TDataType DataType READ DataType WRITE SetDataType)
    Q_PROPERTY(qxnum::TNumericType NumericType READ NumericType WRITE SetNumericType)
    Q_PROPERTY(qxnum::TParType ParType READ ParType WRITE SetParType)
    Q_PROPERTY(double CustomScale READ PropCustomScale WRITE SetPropCustomScale)
    Q_PROPERTY(double ScaleOffset READ PropScaleOffset WRITE SetPropScaleOffset)
    Q_PROPERTY(QString CustomFormat READ CustomFormat WRITE SetCustomFormat)
    Q_PROPERTY(QString CustomUnitStr READ CustomUnitStr WRITE SetCustomUnitStr)
    Q_PROPERTY(bool TrimZeroes READ TrimZeroes WRITE SetTrimZeroes)
    Q_PROPERTY(bool StringCol READ StringCol WRITE SetStringCol)
    Q_PROPERTY(bool CheckBoxCol READ CheckBoxCol WRITE SetCheckBoxCol)
    Q_PROPERTY(QString DefaultStr READ DefaultStr WRITE SetDefaultStr)
    Q_PROPERTY(bool Validate READ Validate WRITE SetValidate)
    Q_PROPERTY(qxnum::TUnitSystem UnitSystem READ UnitSystem WRITE SetUnitSystem)
    Q_PROPERTY(int Tag READ Tag WRITE SetTag)
    Q_PROPERTY(bool AutoReformat READ AutoReformat WRITE SetAutoReformat)

public:
    /// Use TNumColumns::Add; a factory of a derived column class calls this constructor.
    explicit TNumColumn(TNumColumns* Collection);
    ~TNumColumn() override;

    TNumGrid* Grid() const;
    TNumColumns* Collection() const;
    /// Position in the collection, equal to the grid column it describes.
    int Index() const;

    TAlignment Alignment() const;
    virtual void SetAlignment(TAlignment AValue);
    QColor Color() const;
    void SetColor(const QColor& AValue);
    QFont Font() const;
    void SetFont(const QFont& AValue);
    TImeMode ImeMode() const;
    virtual void SetImeMode(TImeMode AValue);
    QString ImeName() const;
    virtual void SetImeName(const QString& AValue);
    QMenu* PopupMenu() const;
    void SetPopupMenu(QMenu* AValue);
    bool ReadOnly() const;
    virtual void SetReadOnly(bool AValue);
    TNumColTitle* Title() const;
    /// Copies AValue into the column's own title.
    void SetTitle(const TNumColTitle& AValue);
    /// The same for the Qt property (Designer, setProperty); nullptr changes nothing.
    void SetTitle(TNumColTitle* AValue) {
        if (AValue) SetTitle(*AValue);
    }
    /// -1 for an invisible column.
    int Width() const;
    /// -1 is ignored.
    virtual void SetWidth(int AValue);
    bool Visible() const;
    void SetVisible(bool AValue);
    quint16 Decimals() const;
    void SetDecimals(quint16 AValue);
    quint16 Digits() const;
    void SetDigits(quint16 AValue);
    Extended Max() const;
    void SetMax(Extended AValue);
    Extended Min() const;
    void SetMin(Extended AValue);
    /// Both limits at once, whatever they were: a Max below Min becomes Min.
    void SetRange(Extended AMin, Extended AMax);
    TDataType DataType() const;
    void SetDataType(TDataType AValue);
    TNumericType NumericType() const;
    void SetNumericType(TNumericType AValue);
    TParType ParType() const;
    void SetParType(TParType AValue);
    Extended CustomScale() const;
    /// Ignored when its magnitude is 1e-14 or less.
    void SetCustomScale(Extended AValue);
    Extended ScaleOffset() const;
    void SetScaleOffset(Extended AValue);
    QString CustomFormat() const;
    void SetCustomFormat(const QString& AValue);
    QString CustomUnitStr() const;
    void SetCustomUnitStr(const QString& AValue);
    bool TrimZeroes() const;
    void SetTrimZeroes(bool AValue);
    bool StringCol() const;
    void SetStringCol(bool AValue);
    bool CheckBoxCol() const;
    /// True also makes the column a string column.
    void SetCheckBoxCol(bool AValue);
    /// For a numeric column the default in base units, kept formatted in the column's format.
    QString DefaultStr() const;
    void SetDefaultStr(const QString& AValue);
    bool Validate() const;
    void SetValidate(bool AValue);
    TUnitSystem UnitSystem() const;
    /// Runs even for the present value; see the header comment.
    void SetUnitSystem(TUnitSystem AValue);
    int Tag() const;
    void SetTag(int AValue);
    bool AutoReformat() const;
    void SetAutoReformat(bool AValue);

    TNotifyEvent OnUnitSystemChange() const;
    void SetOnUnitSystemChange(TNotifyEvent AEvent);
    TGetColNumTextEvent OnGetNumtext() const;
    void SetOnGetNumtext(TGetColNumTextEvent AEvent);
    TSetColNumValueEvent OnSetNumValue() const;
    void SetOnSetNumValue(TSetColNumValueEvent AEvent);
    /// When assigned, the column's cells may hold expressions whose identifiers it resolves.
    TOnCheckVariableEvent OnExprCheckVariable() const;
    void SetOnExprCheckVariable(TOnCheckVariableEvent AEvent);

    /// True once the unit system has been set.
    bool UnitSystemSet() const;

    TAlignment DefaultAlignment() const;
    QColor DefaultColor() const;
    QFont DefaultFont() const;
    TImeMode DefaultImeMode() const;
    QString DefaultImeName() const;
    bool DefaultReadOnly() const;
    /// Takes the default font again without reporting a change.
    void RefreshDefaultFont();

    /// Caption, line break and unit text, trimmed as a whole: without unit text no trailing line
    /// break, with an empty caption the unit text alone.
    QString TitleString() const;
    /// CustomUnitStr, else the unit text of the parameter type and unit system.
    QString UnitString() const;
    /// CustomScale times the unit system factor of the parameter type.
    Extended Scale() const;

    /// Formats Value for row ARow; Scaled: Value is in base units and is shown in display units.
    QString GetValueString(int ARow, Extended Value, bool Scaled);
    /// Reads Text of row ARow into Value (base units when Scaled), clamped to Min/Max. Raises
    /// EConvertError for text that is no number, EQXParserError for an expression that fails.
    void SetValuefromStr(int ARow, const QString& Text, Extended& Value, bool Scaled);

    /// The value of the cell in row ARow in base units (0 when it is no number).
    Extended DValues(int ARow);
    void SetDValues(int ARow, Extended Value);
    int IntValues(int ARow);
    void SetIntValues(int ARow, int Value);

    /// Raw copy of the published state (see the header comment for what is left out).
    void Assign(const TNumColumn& Source);

    /// Double views of the extended-valued properties, for the Qt properties.
    double PropMax() const { return static_cast<double>(Max()); }
    void SetPropMax(double V) { SetMax(V); }
    double PropMin() const { return static_cast<double>(Min()); }
    void SetPropMin(double V) { SetMin(V); }
    double PropCustomScale() const { return static_cast<double>(CustomScale()); }
    void SetPropCustomScale(double V) { SetCustomScale(V); }
    double PropScaleOffset() const { return static_cast<double>(ScaleOffset()); }
    void SetPropScaleOffset(double V) { SetScaleOffset(V); }

protected:
    /// Makes the title; called once the column is in its collection, so an override is honoured.
    virtual TNumColTitle* CreateTitle();
    /// Reports this column's change to the collection (TNumColumns::Update).
    void Changed(bool AllItems = false);

private:
    friend class TNumColumns;
    friend class TNumGrid;
    friend class TNumColTitle;
    friend class TNumGridPrivate;
    TNumColumnPrivate* Priv() const { return d.get(); }
    const std::unique_ptr<TNumColumnPrivate> d;
};

/// Makes a column of the collection's class; the default makes a TNumColumn.
using TNumColumnFactory = std::function<TNumColumn*(TNumColumns* Collection)>;

class QXNUM_WIDGETS_EXPORT TNumColumns : public QObject {
    Q_OBJECT

public:
    explicit TNumColumns(TNumGrid* Grid, TNumColumnFactory ColumnClass = {});
    ~TNumColumns() override;

    TNumGrid* Grid() const;
    int Count() const;
    /// nullptr outside 0 .. Count() - 1.
    TNumColumn* Items(int Index) const;
    /// Assigns Value into the existing column Index.
    void SetItems(int Index, const TNumColumn& Value);
    TNumColumn* Add();
    TNumColumn* Insert(int Index);
    void Delete(int Index);
    void Clear();

    /// While an update is open, changes are not reported to the grid.
    void BeginUpdate();
    void EndUpdate();
    /// A change of Item (nullptr: of the whole collection, which needs nothing).
    virtual void Update(TNumColumn* Item);

private:
    friend class TNumColumn;
    const std::unique_ptr<TNumColumnsPrivate> d;
};

} // namespace qxnum
