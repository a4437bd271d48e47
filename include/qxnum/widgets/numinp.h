/// \file
/// The labelled numeric input: a numeric edit with a name label and a unit label beside it.
///
/// The labels are siblings of the edit (children of its parent widget) and follow its position,
/// size, parent, visibility, enabled state and layout direction. A label can be deleted; the edit
/// keeps working without it (SetupInternalEditUnitLabels makes a new one).
///
/// Placement has two modes.
///   By hand (no layout holds the edit): the edit's geometry is the edit alone and the labels sit
///   outside it, each on its side at its spacing (SetBounds, SetNumLabelPosition). sizeHint() is the
///   edit's own.
///   In a layout (any QLayout of the parent, nested ones included): the edit and its labels are one
///   layout item. sizeHint() and minimumSizeHint() include the shown labels and their spacings; the
///   rectangle the layout assigns is the outer one, and the edit sets its own geometry to the inner
///   rectangle and puts the labels into the rest, so nothing reaches into a neighbour's cell. Two
///   labels on one side are stacked, the unit label next to the edit; a negative spacing counts as
///   0 here. A hidden edit takes no room and hides its labels.
///   The layout's rectangle is learnt exactly: in a QBoxLayout, QGridLayout or QFormLayout the
///   edit's plain layout item is replaced (once, from the event loop) by one that hands the outer
///   rectangle to the edit and adds the label room to the edit's explicit minimum and maximum
///   sizes. Until then, and in other layouts, a geometry that differs from the inner rectangle last
///   set is taken as the outer one. Either way the edit's own geometry change never feeds back into
///   the layout, so repeated passes give the same result.
///
/// In a QFormLayout, either let the field show its own name: addRow(Field) (the field spans both
/// columns and its name label takes the label column's place); or use the layout's label:
/// addRow(Caption, Field) with SetNameLabelVisible(false), so that the name label neither shows nor
/// takes room (the layout's label gets the field as buddy).
///
/// The name label's caption follows the object name while it is empty or equal to the old name.
/// The unit label shows "Unit" until a parameter type or unit system is set, then the table's unit
/// text, or the custom unit text when one is set.
///
/// Accessibility: the edit's accessible name is the name label's caption, its accessible
/// description the unit label's caption.
#pragma once

#include <qxnum/widgets/numedit.h>

#include <QLabel>

#include <memory>

namespace qxnum {

class TCustomNumInp;
class TCustomNumInpPrivate;
class TNumInpLayoutItem;
class TNumFldBoundLabelPrivate;

/// A label bound to a labelled numeric input.
class QXNUM_WIDGETS_EXPORT TNumFldBoundLabel : public QLabel {
    Q_OBJECT

public:
    explicit TNumFldBoundLabel(TCustomNumInp* Owner);
    ~TNumFldBoundLabel() override;

    TCustomNumInp* OwnerControl() const;
    QString Caption() const { return text(); }
    void SetCaption(const QString& S) { setText(S); }
    int Left() const { return x(); }
    int Top() const { return y(); }
    int Width() const { return width(); }
    int Height() const { return height(); }
    /// Takes the size of the caption and lets the owner place the label again.
    void AdjustBounds();

public Q_SLOTS:
    /// Sets the caption and adjusts the bounds (QLabel::setText alone would leave the size as it was).
    void setText(const QString& S);

protected:
    void changeEvent(QEvent* E) override;

private:
    const std::unique_ptr<TNumFldBoundLabelPrivate> DLabel;
};

class QXNUM_WIDGETS_EXPORT TCustomNumInp : public TCustomNumEdit {
    Q_OBJECT
    Q_PROPERTY(qxnum::TNumFldBoundLabel* EditLabel READ EditLabel)
    Q_PROPERTY(qxnum::TNumFldBoundLabel* EditUnitLabel READ EditUnitLabel)
    Q_PROPERTY(qxnum::TLabelPosition EditLabelPosition READ EditLabelPosition WRITE SetEditLabelPosition)
    Q_PROPERTY(
        qxnum::TLabelPosition EditUnitLabelPosition READ EditUnitLabelPosition WRITE SetEditUnitLabelPosition)
    Q_PROPERTY(int EditLabelSpacing READ EditLabelSpacing WRITE SetEditLabelSpacing)
    Q_PROPERTY(int EditUnitLabelSpacing READ EditUnitLabelSpacing WRITE SetEditUnitLabelSpacing)
    Q_PROPERTY(QString CustomUnitStr READ CustomUnitStr WRITE SetCustomUnitStr)
    Q_PROPERTY(bool UnitVisible READ UnitVisible WRITE SetUnitVisible)
    Q_PROPERTY(bool NameLabelVisible READ NameLabelVisible WRITE SetNameLabelVisible)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setEditLabelPosition(TLabelPosition AValue) { SetEditLabelPosition(AValue); }
    void setEditUnitLabelPosition(TLabelPosition AValue) { SetEditUnitLabelPosition(AValue); }
    void setEditLabelSpacing(int AValue) { SetEditLabelSpacing(AValue); }
    void setEditUnitLabelSpacing(int AValue) { SetEditUnitLabelSpacing(AValue); }
    void setCustomUnitStr(const QString& AValue) { SetCustomUnitStr(AValue); }
    void setUnitVisible(bool AValue) { SetUnitVisible(AValue); }
    void setNameLabelVisible(bool AValue) { SetNameLabelVisible(AValue); }

    explicit TCustomNumInp(QWidget* Parent = nullptr);
    ~TCustomNumInp() override;

    /// The labels; nullptr after one has been deleted.
    TNumFldBoundLabel* EditLabel() const;
    TNumFldBoundLabel* EditUnitLabel() const;

    TLabelPosition EditLabelPosition() const;
    void SetEditLabelPosition(TLabelPosition AValue);
    TLabelPosition EditUnitLabelPosition() const;
    void SetEditUnitLabelPosition(TLabelPosition AValue);
    int EditLabelSpacing() const;
    void SetEditLabelSpacing(int AValue);
    int EditUnitLabelSpacing() const;
    void SetEditUnitLabelSpacing(int AValue);
    QString CustomUnitStr() const;
    void SetCustomUnitStr(const QString& AValue);
    bool UnitVisible() const;
    void SetUnitVisible(bool AValue);
    /// False hides the name label and frees its room (for a layout that shows its own label).
    bool NameLabelVisible() const;
    void SetNameLabelVisible(bool AValue);

    /// In a layout: the edit's hints plus the room of the shown labels (see the header comment).
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    void SetParType(TParType AValue) override;
    void SetUnitSystem(TUnitSystem AValue) override;

    /// Moves and sizes the edit and places the labels at once (also while hidden).
    void SetBounds(int ALeft, int ATop, int AWidth, int AHeight);
    /// Places Label on side Position of the edit, Spacing pixels away.
    void SetNumLabelPosition(TNumFldBoundLabel* Label, TLabelPosition Position, int Spacing);
    /// Places both labels at their positions and spacings.
    void PlaceLabels();
    /// Creates the missing labels (name label: the object name; unit label: "Unit").
    void SetupInternalEditUnitLabels();

protected:
    bool event(QEvent* E) override;
    void moveEvent(QMoveEvent* E) override;
    void resizeEvent(QResizeEvent* E) override;

private:
    friend class TNumFldBoundLabel;
    friend class TNumInpLayoutItem;
    struct TLabelRoom;
    TLabelRoom LabelRoom() const;
    QSize OuterSize(QSize Inner) const;
    QLayout* HoldingLayout(int* Index = nullptr) const;
    bool InLayout() const;
    void SetOuterGeometry(const QRect& Outer);
    void GeometryChanged();
    void ReplaceLayoutItem();
    void LabelRoomChanged();
    void LabelChanged(TNumFldBoundLabel* Label);
    void UpdateUnitCaption();
    void SyncLabelParents();
    void SyncLabelVisibility();
    void SyncLabelEnabled();
    bool ControlShown() const;
    QString UniqueLabelName(const QObject* Except) const;
    void NameChanged(const QString& NewName);

    const std::unique_ptr<TCustomNumInpPrivate> DInp;
};

/// The published labelled numeric input, registered as "TNumInp".
class QXNUM_WIDGETS_EXPORT TNumInp : public TCustomNumInp {
    Q_OBJECT

public:
    explicit TNumInp(QWidget* Parent = nullptr) : TCustomNumInp(Parent) {}
};

} // namespace qxnum
