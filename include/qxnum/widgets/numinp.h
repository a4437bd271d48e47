// The labelled numeric input: a numeric edit with a name label and a unit label beside it.
//
// The labels are siblings of the edit (children of its parent widget) and follow its position,
// size, parent, visibility, enabled state and layout direction. They are placed by the edit, not
// by a layout: put the edit into a layout with room for its labels, or position it by hand.
// A label can be deleted; the edit keeps working without it (SetupInternalEditUnitLabels makes a
// new one).
//
// The name label's caption follows the object name while it is empty or equal to the old name.
// The unit label shows "Unit" until a parameter type or unit system is set, then the table's unit
// text, or the custom unit text when one is set.
//
// Accessibility: the edit's accessible name is the name label's caption, its accessible
// description the unit label's caption.
#pragma once

#include <qxnum/widgets/numedit.h>

#include <QLabel>

#include <memory>

namespace qxnum {

class TCustomNumInp;
class TCustomNumInpPrivate;
class TNumFldBoundLabelPrivate;

// A label bound to a labelled numeric input.
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
    // Takes the size of the caption and lets the owner place the label again.
    void AdjustBounds();

public Q_SLOTS:
    // Sets the caption and adjusts the bounds (QLabel::setText alone would leave the size as it was).
    void setText(const QString& S);

protected:
    void changeEvent(QEvent* E) override;

private:
    const std::unique_ptr<TNumFldBoundLabelPrivate> DLabel;
};

class QXNUM_WIDGETS_EXPORT TCustomNumInp : public TCustomNumEdit {
    Q_OBJECT

public:
    explicit TCustomNumInp(QWidget* Parent = nullptr);
    ~TCustomNumInp() override;

    // The labels; nullptr after one has been deleted.
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

    void SetParType(TParType AValue) override;
    void SetUnitSystem(TUnitSystem AValue) override;

    // Moves and sizes the edit and places the labels at once (also while hidden).
    void SetBounds(int ALeft, int ATop, int AWidth, int AHeight);
    // Places Label on side Position of the edit, Spacing pixels away.
    void SetNumLabelPosition(TNumFldBoundLabel* Label, TLabelPosition Position, int Spacing);
    // Places both labels at their positions and spacings.
    void PlaceLabels();
    // Creates the missing labels (name label: the object name; unit label: "Unit").
    void SetupInternalEditUnitLabels();

protected:
    bool event(QEvent* E) override;
    void moveEvent(QMoveEvent* E) override;
    void resizeEvent(QResizeEvent* E) override;

private:
    friend class TNumFldBoundLabel;
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

// The published labelled numeric input, registered as "TNumInp".
class QXNUM_WIDGETS_EXPORT TNumInp : public TCustomNumInp {
    Q_OBJECT

public:
    explicit TNumInp(QWidget* Parent = nullptr) : TCustomNumInp(Parent) {}
};

} // namespace qxnum
