// The numeric edit's edit cycle: keystroke filter, paste and drop checks, focus handling,
// alignment and text colour.
#include "numedit_p.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QRegularExpression>
#include <QToolTip>

namespace qxnum {

namespace {

using TTypingRules = TCustomNumEditPrivate::TTypingRules;

// How far a text breaks each rule; an edit may not make any of them worse. Bad counts every
// misplaced character; the split below it names the rule for the refusal tooltip.
struct TTextShape {
    int Bad = 0;
    int BadSeparators = 0; // a second separator, or one in the exponent or without decimals
    int BadSigns = 0;
    int BadExponents = 0; // an "E" without digits before it, a second one, or none allowed
    int DecimalsOver = 0;
    int ExponentOver = 0;
    int LengthOver = 0;
};

bool IsDigit(QChar C) {
    return C >= QLatin1Char('0') && C <= QLatin1Char('9');
}
bool IsSign(QChar C) {
    return C == QLatin1Char('+') || C == QLatin1Char('-');
}
bool IsExponentMark(QChar C) {
    return C == QLatin1Char('E') || C == QLatin1Char('e');
}

QString Tr(const char* Source) {
    return QCoreApplication::translate("TCustomNumEdit", Source);
}

TTextShape ShapeOf(const QString& Text, const TTypingRules& R) {
    TTextShape S;
    bool SeenSep = false, InExponent = false, ExponentSign = false;
    int MantissaDigits = 0, Decimals = 0, ExponentChars = 0, Signs = 0, CoreChars = 0;
    for (const QChar C : Text) {
        const bool Structural = C == R.Sep || IsDigit(C) || IsSign(C) || (IsExponentMark(C) && !R.Currency);
        if (!Structural && R.Decoration.contains(C)) continue;
        const bool First = CoreChars == 0;
        ++CoreChars;
        if (InExponent) ++ExponentChars;
        if (IsDigit(C)) {
            if (!InExponent) {
                ++MantissaDigits;
                if (SeenSep) ++Decimals;
            }
        } else if (C == R.Sep) {
            if (InExponent || SeenSep || R.MaxDecimals == 0)
                ++S.BadSeparators;
            else
                SeenSep = true;
        } else if (IsSign(C)) {
            if (R.Currency) {
                if (++Signs > 1) ++S.BadSigns;
            } else if (InExponent) {
                // Only right after the "E".
                if (ExponentSign || ExponentChars != 2) ++S.BadSigns;
                ExponentSign = true;
            } else if (!First) {
                ++S.BadSigns;
            }
        } else if (IsExponentMark(C) && !R.Currency) {
            if (InExponent || R.MaxExponent == 0 || MantissaDigits == 0) {
                ++S.BadExponents;
            } else {
                InExponent = true;
                ExponentChars = 1;
            }
        } else {
            ++S.Bad;
        }
    }
    S.Bad += S.BadSeparators + S.BadSigns + S.BadExponents;
    if (R.MaxDecimals > 0 && Decimals > R.MaxDecimals) S.DecimalsOver = Decimals - R.MaxDecimals;
    if (InExponent && ExponentChars > R.MaxExponent) S.ExponentOver = ExponentChars - R.MaxExponent;
    if (Text.size() > R.MaxLength) S.LengthOver = static_cast<int>(Text.size()) - R.MaxLength;
    return S;
}

// Why a character may not be typed at all under R; empty when it may.
QString CharacterRefusal(QChar C, const TTypingRules& R) {
    const QString Quoted = QStringLiteral("\"") + C + QStringLiteral("\"");
    if (C == QLatin1Char('.') || C == QLatin1Char(',')) {
        if (C == R.Sep) return Tr("No decimals here");
        return Tr("The decimal separator here is %1")
            .arg(QStringLiteral("\"") + R.Sep + QStringLiteral("\""));
    }
    if (IsExponentMark(C)) return Tr("No exponent here");
    if (C.isLetter()) return Tr("Letters are not allowed here");
    if (C.isSpace()) return Tr("Blanks are not allowed here");
    return Tr("%1 is not allowed here").arg(Quoted);
}

} // namespace

TTypingRules TCustomNumEditPrivate::TypingRules() const {
    TTypingRules R;
    R.Expression = TypesExpressions();
    R.Sep = NumInpFormatSettings.DecimalSeparator;
    R.MaxLength = FMaxTextLength;
    // "E-4932": the widest exponent of an extended value.
    constexpr int WideExponent = 6;
    if (IsIntegerDataType(FDataType)) {
        R.MaxDecimals = 0;
        R.MaxExponent = 0;
        return R;
    }
    switch (FNumericType) {
    case ntGeneral:
    case ntExponent:
        R.MaxDecimals = -1;
        R.MaxExponent = WideExponent;
        break;
    case ntFixed:
        R.MaxDecimals = FDecimals;
        R.MaxExponent = WideExponent;
        break;
    case ntNumber:
        R.MaxDecimals = FDecimals;
        R.MaxExponent = WideExponent;
        R.Decoration = NumInpFormatSettings.ThousandSeparator;
        break;
    case ntCurrency:
        R.Currency = true;
        R.MaxDecimals = FDecimals;
        R.MaxExponent = 0;
        R.Decoration = QString(NumInpFormatSettings.ThousandSeparator) + NumInpFormatSettings.CurrencyString +
                       QStringLiteral("() ");
        break;
    case ntParType:
    default:
        R.MaxDecimals = FormatDecimalCount(FParType, FUnitSystem, FCustomFormat, NumInpFormatSettings);
        R.MaxExponent = FormatExponentLength(FParType, FUnitSystem, FCustomFormat);
        break;
    }
    return R;
}

bool TCustomNumEdit::IsAcceptableEdit(const QString& OldText, const QString& NewText) const {
    return RefusalReason(OldText, NewText).isEmpty();
}

QString TCustomNumEdit::RefusalReason(const QString& OldText, const QString& NewText) const {
    if (OldText == NewText) return {};
    // The inserted part: what is left between the common prefix and the common suffix.
    qsizetype Prefix = 0;
    const qsizetype MinLen = qMin(OldText.size(), NewText.size());
    while (Prefix < MinLen && OldText[Prefix] == NewText[Prefix])
        ++Prefix;
    qsizetype Suffix = 0;
    while (Suffix < MinLen - Prefix &&
           OldText[OldText.size() - 1 - Suffix] == NewText[NewText.size() - 1 - Suffix])
        ++Suffix;
    const QString Inserted = NewText.mid(Prefix, NewText.size() - Prefix - Suffix);
    if (Inserted.isEmpty()) return {}; // only deleted

    const TTypingRules R = d->TypingRules();
    if (R.Expression) {
        const QChar ArgSep = R.Sep == QLatin1Char(',') ? QLatin1Char(';') : QLatin1Char(',');
        for (const QChar C : Inserted) {
            if (C.isLetterOrNumber() || C == QLatin1Char('_') || C == R.Sep || C == ArgSep ||
                C == QLatin1Char(' ') || QStringLiteral("+-*/^().").contains(C))
                continue;
            return Tr("%1 is not allowed in an expression")
                .arg(QStringLiteral("\"") + C + QStringLiteral("\""));
        }
        return {};
    }
    for (const QChar C : Inserted) {
        const bool Allowed = IsDigit(C) || IsSign(C) || (C == R.Sep && R.MaxDecimals != 0) ||
                             (IsExponentMark(C) && R.MaxExponent > 0 && !R.Currency) ||
                             R.Decoration.contains(C);
        if (!Allowed) return CharacterRefusal(C, R);
    }
    const TTextShape Old = ShapeOf(OldText, R);
    const TTextShape New = ShapeOf(NewText, R);
    if (New.Bad > Old.Bad) {
        if (New.BadSeparators > Old.BadSeparators)
            return Tr("Only one decimal separator, not in the exponent");
        if (New.BadSigns > Old.BadSigns) return Tr("A sign only at the start or right after the exponent");
        return Tr("An exponent only once and after a digit");
    }
    if (New.DecimalsOver > Old.DecimalsOver)
        return R.MaxDecimals == 1 ? Tr("At most one decimal here")
                                  : Tr("At most %1 decimals here").arg(R.MaxDecimals);
    if (New.ExponentOver > Old.ExponentOver) return Tr("The exponent is too long");
    if (New.LengthOver > Old.LengthOver)
        return R.MaxLength == 1 ? Tr("At most one character here")
                                : Tr("At most %1 characters here").arg(R.MaxLength);
    return {};
}

void TCustomNumEdit::Refuse(const QString& Reason) {
    QApplication::beep();
    d->FLastRefusal = Reason;
    // Shown below the cursor; the whole edit as the rectangle, so a small mouse move keeps it.
    QToolTip::showText(mapToGlobal(cursorRect().bottomLeft()), Reason, this, rect(), 4000);
}

void TCustomNumEdit::Accepted() {
    if (d->FLastRefusal.isEmpty()) return;
    d->FLastRefusal.clear();
    QToolTip::hideText();
}

QString TCustomNumEdit::CandidateText(const QString& S) const {
    QString New = text();
    if (hasSelectedText())
        New.replace(selectionStart(), selectedText().size(), S);
    else
        New.insert(cursorPosition(), S);
    return New;
}

bool TCustomNumEdit::InsertChecked(const QString& S) {
    if (isReadOnly()) return false;
    QString Ins = S;
    const qsizetype LineEnd = Ins.indexOf(QRegularExpression(QStringLiteral("[\r\n]")));
    if (LineEnd >= 0) Ins.truncate(LineEnd);
    Ins = Ins.trimmed();
    if (Ins.isEmpty()) return false;
    if (const QString Reason = RefusalReason(text(), CandidateText(Ins)); !Reason.isEmpty()) {
        Refuse(Reason);
        return false;
    }
    Accepted();
    insert(Ins);
    return true;
}

bool TCustomNumEdit::PasteChecked(QClipboard::Mode Mode) {
    return InsertChecked(QGuiApplication::clipboard()->text(Mode));
}

// ---- events ----------------------------------------------------------------------------------------

void TCustomNumEdit::keyPressEvent(QKeyEvent* E) {
    const int Key = E->key();
    if (Key == Qt::Key_Up || Key == Qt::Key_Down) {
        const bool Next = Key == Qt::Key_Down;
        // Posted, as the form would get it: the edit finishes its own key handling first.
        QMetaObject::invokeMethod(
            this,
            [this, Next] {
                if (hasFocus()) focusNextPrevChild(Next);
            },
            Qt::QueuedConnection);
        QLineEdit::keyPressEvent(E);
        return;
    }
    if ((Key == Qt::Key_Return || Key == Qt::Key_Enter) && d->FTabOnEnterKey) {
        focusNextPrevChild(true);
        E->accept();
        return;
    }
    if (Key == Qt::Key_Return || Key == Qt::Key_Enter) {
        // Enter takes the text as leaving would, and stays (QLineEdit's returnPressed follows).
        const QPointer<TCustomNumEdit> Self(this);
        const bool Taken = UpdateValue(false);
        if (!Self) return;
        if (!Taken) {
            // Keep a dialog's default button from acting on a refused value.
            E->accept();
            return;
        }
        Q_EMIT valueEditingFinished();
        if (!Self) return;
    }
    if (E->matches(QKeySequence::Paste)) {
        if (!isReadOnly()) PasteChecked(QClipboard::Clipboard);
        E->accept();
        return;
    }
    QString Typed = E->text();
    const Qt::KeyboardModifiers Mods = E->modifiers();
    // Ctrl or Meta make a shortcut, unless Ctrl comes with Alt (AltGr on some platforms).
    const bool Shortcut =
        (Mods & Qt::MetaModifier) || ((Mods & Qt::ControlModifier) && !(Mods & Qt::AltModifier));
    bool Printable = !Typed.isEmpty();
    for (const QChar C : Typed)
        if (!C.isPrint()) Printable = false;
    if (Printable && !Shortcut && !isReadOnly()) {
        const QChar Sep = NumInpFormatSettings.DecimalSeparator;
        if ((Mods & Qt::KeypadModifier) && (Key == Qt::Key_Period || Key == Qt::Key_Comma) &&
            Typed != QString(Sep))
            Typed = Sep;
        if (const QString Reason = RefusalReason(text(), CandidateText(Typed)); !Reason.isEmpty()) {
            Refuse(Reason);
            E->accept();
            return;
        }
        Accepted();
        if (Typed != E->text()) {
            insert(Typed);
            E->accept();
            return;
        }
    }
    QLineEdit::keyPressEvent(E);
}

void TCustomNumEdit::focusInEvent(QFocusEvent* E) {
    d->FFocused = true;
    ApplyAlignment();
    QLineEdit::focusInEvent(E);
}

void TCustomNumEdit::focusOutEvent(QFocusEvent* E) {
    const Qt::FocusReason Reason = E->reason();
    // Another window or a popup taking the focus is not leaving the edit.
    if (Reason != Qt::ActiveWindowFocusReason && Reason != Qt::PopupFocusReason) {
        const QPointer<TCustomNumEdit> Self(this);
        const bool Taken = UpdateValue(true);
        if (!Self) return;
        // A refused text gave the focus back: the edit was never left.
        if (hasFocus()) return;
        if (Taken) Q_EMIT valueEditingFinished();
        if (!Self) return;
    }
    QLineEdit::focusOutEvent(E);
    ApplyAlignment();
}

void TCustomNumEdit::contextMenuEvent(QContextMenuEvent* E) {
    QMenu* Menu = createStandardContextMenu();
    if (!Menu) return;
    Menu->setAttribute(Qt::WA_DeleteOnClose);
    // The paste action is the one wired to QLineEdit::paste: take it over. Qt has used both
    // kinds of connection over the years, so try both.
    for (QAction* A : Menu->actions()) {
        const bool Paste = QObject::disconnect(A, &QAction::triggered, this, &QLineEdit::paste) ||
                           QObject::disconnect(A, SIGNAL(triggered()), this, SLOT(paste())) ||
                           QObject::disconnect(A, SIGNAL(triggered(bool)), this, SLOT(paste()));
        if (Paste) connect(A, &QAction::triggered, this, [this] { PasteChecked(QClipboard::Clipboard); });
    }
    Menu->popup(E->globalPos());
}

void TCustomNumEdit::mouseReleaseEvent(QMouseEvent* E) {
    if (E->button() == Qt::MiddleButton && QGuiApplication::clipboard()->supportsSelection() &&
        !isReadOnly()) {
        PasteChecked(QClipboard::Selection);
        E->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(E);
}

void TCustomNumEdit::dropEvent(QDropEvent* E) {
    if (!isReadOnly() && E->mimeData() && E->mimeData()->hasText()) {
        QString New = text();
        New.insert(qBound(0, cursorPositionAt(E->position().toPoint()), static_cast<int>(New.size())),
                   E->mimeData()->text());
        if (const QString Reason = RefusalReason(text(), New); !Reason.isEmpty()) {
            Refuse(Reason);
            E->ignore();
            return;
        }
        Accepted();
    }
    QLineEdit::dropEvent(E);
}

void TCustomNumEdit::inputMethodEvent(QInputMethodEvent* E) {
    const QString Commit = E->commitString();
    const QString Reason =
        Commit.isEmpty() || isReadOnly() ? QString() : RefusalReason(text(), CandidateText(Commit));
    if (!Reason.isEmpty()) {
        Refuse(Reason);
        // Keep the composition, drop the refused commit.
        QInputMethodEvent Stripped(E->preeditString(), E->attributes());
        QLineEdit::inputMethodEvent(&Stripped);
        return;
    }
    QLineEdit::inputMethodEvent(E);
}

bool TCustomNumEdit::event(QEvent* E) {
    const QEvent::Type Type = E->type();
    if (Type == QEvent::PaletteChange && !d->FApplyingPalette) {
        // The host changed the palette: its text colour is the new normal colour, and its base
        // decides whether the default negative colour still reads.
        const QColor Text = palette().color(QPalette::Active, QPalette::Text);
        const bool NewText = Text != d->FAppliedColour;
        if (NewText) {
            d->FNormalColor = Text;
            d->FAppliedColour = Text;
        }
        const QColor Wanted = d->FValue < 0 ? d->DrawnNegColor(palette()) : d->FNormalColor;
        if (NewText || Wanted != d->FFontColor) {
            d->FFontColor = Wanted;
            const bool Result = QLineEdit::event(E);
            ApplyTextColour();
            return Result;
        }
    }
    const bool Result = QLineEdit::event(E);
    switch (Type) {
    case QEvent::ReadOnlyChange:
        ApplyTextColour();
        break;
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::FontChange:
        update();
        break;
    default:
        break;
    }
    return Result;
}

// ---- look --------------------------------------------------------------------------------------------

void TCustomNumEdit::ApplyAlignment() {
    const Qt::Alignment Horizontal = hasFocus() ? Qt::Alignment(Qt::AlignLeft) : d->FAlignment;
    const Qt::Alignment Wanted = Horizontal | Qt::AlignVCenter;
    if (alignment() != Wanted) setAlignment(Wanted);
}

void TCustomNumEdit::ApplyTextColour() {
    const QColor Colour = isReadOnly() ? d->FReadOnlyFontColor : d->FFontColor;
    QPalette P = palette();
    d->FAppliedColour = Colour;
    if (P.color(QPalette::Active, QPalette::Text) == Colour &&
        P.color(QPalette::Inactive, QPalette::Text) == Colour)
        return;
    P.setColor(QPalette::Active, QPalette::Text, Colour);
    P.setColor(QPalette::Inactive, QPalette::Text, Colour);
    const bool Old = d->FApplyingPalette;
    d->FApplyingPalette = true;
    setPalette(P);
    d->FApplyingPalette = Old;
}

} // namespace qxnum
