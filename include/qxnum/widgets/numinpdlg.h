/// \file
/// The numeric input query: a small modal dialog that asks the user for one number within limits.
///
///   double Time = 12.5;
///   if (NumInputQuery("Mission", "Enter time", 0, ntParType, 2, 0, 3600, Time, FormatSettings)) ...
///
/// The field filters, evaluates and range-checks the input like every numeric edit, in the units
/// the program shows. OK keeps the dialog open while the typed text is refused.
#pragma once

#include <qxnum/enums.h>
#include <qxnum/formatsettings.h>
#include <qxnum/widgets_export.h>

#include <QDialog>

#include <functional>
#include <memory>

class QLabel;
class QPushButton;

namespace qxnum {

class TNumFld;
class TNumInpDlgFormPrivate;

/// The dialog of NumInputQuery (object name "NumInpDlgForm", caption "Enter Numerical Value").
class QXNUM_WIDGETS_EXPORT TNumInpDlgForm : public QDialog {
    Q_OBJECT

public:
    explicit TNumInpDlgForm(QWidget* Parent = nullptr);
    ~TNumInpDlgForm() override;

    QLabel* Label1() const;
    /// The numeric field; its name label carries the prompt, to the left of the edit.
    TNumFld* NumFld1() const;
    QPushButton* OKbtn() const;
    QPushButton* Cancelbtn() const;
    /// Shown only when HelpContext is not 0; asks the help handler (SetHelpHandler) for the topic.
    QPushButton* HelpBtn() const;
    int HelpContext() const;
    void SetHelpContext(int AValue);

protected:
    bool event(QEvent* E) override;
    void showEvent(QShowEvent* E) override;

private:
    /// Gives the field the focus whenever the dialog becomes active, so that the user can type at once.
    void FormActivate();
    void OKbtnClick();
    std::unique_ptr<TNumInpDlgFormPrivate> d;
};

/// Receives each query's dialog, set up and clamped, just before it is shown: tests drive the
/// dialog from here (for example with a zero-time timer that types and clicks OK); a host may adjust
/// it. Returns the previous hook; an empty hook removes it.
using TNumInpDlgHook = std::function<void(TNumInpDlgForm* Dialog)>;
QXNUM_WIDGETS_EXPORT TNumInpDlgHook SetNumInpDlgHook(TNumInpDlgHook Hook);

/// Asks for a number. ACaption and APrompt replace the dialog's caption and the field's label when
/// not empty; AHelpContext 0 hides the Help button. AValue is brought into [AMin, AMax] first (above
/// AMax -> AMax, then below AMin or NaN -> AMin) and keeps that even when the user cancels. True
/// and the entered value on OK. AFormatSettings is accepted for compatibility; the field formats
/// with the library's own settings.
QXNUM_WIDGETS_EXPORT bool NumInputQuery(const QString& ACaption, const QString& APrompt, int AHelpContext,
                                        TNumericType ANumericType, int ADecimals, double AMin, double AMax,
                                        double& AValue, const TFormatSettings& AFormatSettings);

} // namespace qxnum
