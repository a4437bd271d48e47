/// \file
/// The grid navigator: a bar of eleven buttons that drives one numeric grid (or time-series grid):
/// first, prior, next and last row; append, insert and delete a row; edit, post and refresh
/// requests passed to the grid's events; and Cancel, which clears the table after asking.
///
/// Prior and Next repeat while held: one step at once, another after 400 ms, then every 100 ms.
/// Row moves and insertions first check the grid's current cell (CheckGrid); Delete and the grid's
/// OnCancel come before that check. Each operation on rows is one step of the grid's undo history.
/// A click that leaves the grid on another row reports that once through the grid's
/// CheckCellChange (OnCellTxtChange for the row left, OnCellChange, the new cell's text taken):
/// the Row setter's own report when it moved the row, otherwise (Delete on the last row, Clear
/// Table) the navigator's.
/// The icons are drawn from monochrome SVG resources (":/qxnum/navigator/NQX_FIRST" ...) in the
/// palette's text colour, so they stay crisp at every pixel ratio and follow the theme.
///
/// With the focus, Left / Right choose a button and Space presses it; Ctrl+Z undoes and Ctrl+Y
/// (or Ctrl+Shift+Z) redoes in the driven grid's history.
#pragma once

#include <qxnum/enums.h>
#include <qxnum/widgets/fieldbase.h>
#include <qxnum/widgets/numgrid.h>

#include <QStringList>
#include <QToolButton>

#include <bitset>
#include <functional>
#include <memory>

class QTimer;

namespace qxnum {

class TNumgButtonPrivate;
class TNumGridNavigatorPrivate;

/// A set of navigator buttons.
using TButtonSet = std::bitset<11>;

using ENavClick = std::function<void(QObject* Sender, TNumGridBtn Button)>;

/// One navigator button. With RepeatClicks, a press clicks at once and then repeats while held.
class QXNUM_WIDGETS_EXPORT TNumgButton : public QToolButton {
    Q_OBJECT

public:
    explicit TNumgButton(QWidget* Parent = nullptr);
    ~TNumgButton() override;

    TNumGridBtn Index() const;
    void SetIndex(TNumGridBtn AValue);
    bool RepeatClicks() const;
    void SetRepeatClicks(bool AValue);
    /// The repeat timer: made on the first press of a repeating button, nullptr before.
    QTimer* RepeatTimer() const;

Q_SIGNALS:
    /// The button's action is due: a click, or a press and its repeats for a repeating button.
    void navClick();

protected:
    void mousePressEvent(QMouseEvent* E) override;
    void mouseReleaseEvent(QMouseEvent* E) override;
    void paintEvent(QPaintEvent* E) override;

private:
    friend class TNumGridNavigator;
    void TimerExpired();
    std::unique_ptr<TNumgButtonPrivate> d;
};

class QXNUM_WIDGETS_EXPORT TNumGridNavigator : public QWidget {
    Q_OBJECT
    Q_PROPERTY(qxnum::TNumGrid* NumGrid READ NumGrid WRITE SetNumGrid)
    Q_PROPERTY(QStringList Hints READ Hints WRITE SetHints)
    Q_PROPERTY(bool ConfirmDelete READ ConfirmDelete WRITE SetConfirmDelete)
    Q_PROPERTY(int VisibleButtons READ PropVisibleButtons WRITE SetPropVisibleButtons)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setNumGrid(TNumGrid* AGrid) { SetNumGrid(AGrid); }
    void setHints(const QStringList& AValue) { SetHints(AValue); }
    void setConfirmDelete(bool AValue) { SetConfirmDelete(AValue); }
    void setVisibleButtons(int AValue) { SetPropVisibleButtons(AValue); }

    explicit TNumGridNavigator(QWidget* Parent = nullptr);
    ~TNumGridNavigator() override;

    /// The driven grid; not owned, and forgotten when it is destroyed.
    void SetNumGrid(TNumGrid* AGrid);
    TNumGrid* NumGrid() const;

    /// The action of one button, as a click runs it (without AfterClick).
    void BtnClick(TNumGridBtn Index);
    TNumgButton* Buttons(TNumGridBtn Index) const;

    TButtonSet VisibleButtons() const;
    void SetVisibleButtons(const TButtonSet& AValue);
    /// Line i, when present and not empty, replaces the default hint of button i.
    QStringList Hints() const;
    void SetHints(const QStringList& AValue);
    /// Stored with the navigator; deleting asks through the grid's own ConfirmDelete.
    bool ConfirmDelete() const;
    void SetConfirmDelete(bool AValue);
    TNumGridBtn FocusedButton() const;

    ENavClick OnNavClick() const;
    void SetOnNavClick(ENavClick AEvent);
    /// After every button click (not after BtnClick called by program).
    TNotifyEvent AfterClick() const;
    void SetAfterClick(TNotifyEvent AEvent);

    /// Default hints, then the user's lines.
    void InitHints();
    /// Enabling: every button follows the navigator.
    void EditingChanged();
    void ActiveChanged();
    void DataChanged();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// VisibleButtons as a bit mask (bit i: button i), for properties and Designer.
    int PropVisibleButtons() const;
    void SetPropVisibleButtons(int AValue);

Q_SIGNALS:
    /// A button's action ran (after OnNavClick).
    void navClicked(qxnum::TNumGridBtn Button);

protected:
    void resizeEvent(QResizeEvent* E) override;
    void changeEvent(QEvent* E) override;
    bool event(QEvent* E) override;
    void keyPressEvent(QKeyEvent* E) override;
    void focusInEvent(QFocusEvent* E) override;
    void focusOutEvent(QFocusEvent* E) override;

private:
    void InitButtons();
    void Click(TNumGridBtn Index);
    void ButtonPressed(TNumGridBtn Index);
    void SetFocusedButton(TNumGridBtn Index);
    void PlaceButtons();
    std::unique_ptr<TNumGridNavigatorPrivate> d;
};

} // namespace qxnum
