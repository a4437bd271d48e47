// The numeric edit's look, checked on rendered images: alignment at rest and while focused,
// selection highlight, negative and read-only colours, at device pixel ratios 1 and 2.
#include <qxnum/widgets/numedit.h>

#include "widgettest.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <functional>

using namespace qxnum;

namespace {

// Renders W at the given device pixel ratio into a white image.
QImage Render(QWidget* W, qreal Dpr) {
    QImage Img((QSizeF(W->size()) * Dpr).toSize(), QImage::Format_ARGB32);
    Img.setDevicePixelRatio(Dpr);
    Img.fill(Qt::white);
    W->render(&Img);
    return Img;
}

bool Near(QColor A, QColor B, int Tol = 40) {
    return std::abs(A.red() - B.red()) <= Tol && std::abs(A.green() - B.green()) <= Tol &&
           std::abs(A.blue() - B.blue()) <= Tol;
}

// Columns (in device pixels) that hold text ink: pixels far from the base colour inside the
// frame, in the middle band of rows.
struct TInk {
    int Left = -1, Right = -1, Count = 0;
    bool Found() const { return Count > 0; }
};

TInk InkOf(const QImage& Img, QColor Base, const std::function<bool(QColor)>& IsInk = {}) {
    TInk R;
    const int Margin = static_cast<int>(4 * Img.devicePixelRatio());
    for (int Y = Img.height() / 4; Y < Img.height() * 3 / 4; ++Y)
        for (int X = Margin; X < Img.width() - Margin; ++X) {
            const QColor C = Img.pixelColor(X, Y);
            const bool Ink = IsInk ? IsInk(C) : !Near(C, Base, 60);
            if (!Ink) continue;
            ++R.Count;
            if (R.Left < 0 || X < R.Left) R.Left = X;
            if (X > R.Right) R.Right = X;
        }
    return R;
}

struct TForm {
    QWidget W;
    TNumEdit* E;
    TNumEdit* Other;
    TForm() {
        auto* L = new QVBoxLayout(&W);
        E = new TNumEdit(&W);
        Other = new TNumEdit(&W);
        L->addWidget(E);
        L->addWidget(Other);
        E->setMinimumWidth(200);
        E->SetMin(-1000);
        E->SetMax(1000);
        W.show();
        W.activateWindow();
    }
    bool Focus(QWidget* Target) { return test::Activate(W, Target, Qt::TabFocusReason); }
};

} // namespace

TEST(NumEditPaint, RestingTextFollowsAlignmentFocusedTextIsLeft) {
    for (const qreal Dpr : {1.0, 2.0}) {
        SCOPED_TRACE(Dpr);
        TForm F;
        // The window gives its first edit the focus; rest means another one has it.
        ASSERT_TRUE(F.Focus(F.Other));
        F.E->SetValue(12.5);
        const QColor Base = F.E->palette().color(QPalette::Base);
        const int Width = static_cast<int>(F.E->width() * Dpr);

        const TInk Right = InkOf(Render(F.E, Dpr), Base);
        ASSERT_TRUE(Right.Found());
        EXPECT_GT(Right.Left, Width / 2);
        EXPECT_GT(Right.Right, Width - static_cast<int>(12 * Dpr));

        F.E->SetAlignment(Qt::AlignHCenter);
        const TInk Centre = InkOf(Render(F.E, Dpr), Base);
        EXPECT_NEAR((Centre.Left + Centre.Right) / 2.0, Width / 2.0, 4 * Dpr);

        F.E->SetAlignment(Qt::AlignLeft);
        const TInk Left = InkOf(Render(F.E, Dpr), Base);
        EXPECT_LT(Left.Left, static_cast<int>(12 * Dpr));
        F.E->SetAlignment(Qt::AlignRight);

        // The same text is drawn from the left while the edit has the focus.
        ASSERT_TRUE(F.Focus(F.E));
        F.E->deselect();
        const TInk Focused = InkOf(Render(F.E, Dpr), Base);
        ASSERT_TRUE(Focused.Found());
        EXPECT_LT(Focused.Left, static_cast<int>(12 * Dpr));
        EXPECT_LT(Focused.Right, Width / 2);
        // Same glyphs, same ink width (the caret may add a column).
        EXPECT_NEAR(Focused.Right - Focused.Left, Right.Right - Right.Left, 3 * Dpr);

        ASSERT_TRUE(F.Focus(F.Other));
        const TInk Again = InkOf(Render(F.E, Dpr), Base);
        EXPECT_EQ(Again.Left, Right.Left);
        EXPECT_EQ(Again.Right, Right.Right);
    }
}

TEST(NumEditPaint, SelectionIsHighlightedOnlyWhileFocused) {
    TForm F;
    F.E->SetValue(12.5);
    ASSERT_TRUE(F.Focus(F.E));
    F.E->selectAll();
    const QColor Highlight = F.E->palette().color(QPalette::Active, QPalette::Highlight);
    const auto IsHighlight = [&](QColor C) { return Near(C, Highlight, 12); };
    EXPECT_GT(InkOf(Render(F.E, 1), Qt::white, IsHighlight).Count, 20);

    ASSERT_TRUE(F.Focus(F.Other));
    EXPECT_EQ(InkOf(Render(F.E, 1), Qt::white, IsHighlight).Count, 0);
}

TEST(NumEditPaint, NegativeReadOnlyAndHostColours) {
    TForm F;
    ASSERT_TRUE(F.Focus(F.Other));
    const auto Reddish = [](QColor C) { return C.red() > 150 && C.green() < 90 && C.blue() < 90; };
    const auto Bluish = [](QColor C) { return C.blue() > 150 && C.red() < 90 && C.green() < 90; };
    const auto Greenish = [](QColor C) { return C.green() > 70 && C.red() < 60 && C.blue() < 60; };
    // Pixels of the given colour on the edit rendered over white.
    const auto Count = [&F](const std::function<bool(QColor)>& Is, qreal Dpr = 1) {
        return InkOf(Render(F.E, Dpr), Qt::white, Is).Count;
    };
    F.E->SetNegCol(Qt::red);
    F.E->SetValue(-12.5);
    EXPECT_GT(Count(Reddish), 10);
    F.E->SetValue(12.5);
    EXPECT_EQ(Count(Reddish), 0);
    EXPECT_GT(InkOf(Render(F.E, 1), F.E->palette().color(QPalette::Base)).Count, 10);

    // Read-only text is drawn in ReadOnlyFontColor, also when negative.
    F.E->SetValue(-12.5);
    F.E->setReadOnly(true);
    EXPECT_GT(Count(Bluish, 2), 10);
    EXPECT_EQ(Count(Reddish, 2), 0);
    F.E->SetReadOnlyFontColor(Qt::darkGreen);
    EXPECT_GT(Count(Greenish), 10);
    F.E->setReadOnly(false);
    EXPECT_GT(Count(Reddish), 10);

    // A palette set by the host gives the normal colour.
    QPalette P = F.E->palette();
    P.setColor(QPalette::Text, QColor(0, 0, 200));
    F.E->setPalette(P);
    EXPECT_EQ(F.E->NormalFontColor(), QColor(0, 0, 200));
    EXPECT_GT(Count(Reddish), 10); // still negative
    F.E->SetValue(3);
    EXPECT_GT(Count(Bluish), 10);
    EXPECT_EQ(Count(Reddish), 0);
}

// Unlike the original (deliberate deviation 8): NegCol left at black is drawn readable on a dark
// palette; black stays what NegCol() says, and a colour the host sets is drawn exactly.
TEST(NumEditPaint, DefaultNegativeColourReadsOnADarkPaletteAndAHostColourIsKept) {
    QPalette Dark;
    Dark.setColor(QPalette::Base, QColor(30, 30, 32));
    Dark.setColor(QPalette::Window, QColor(45, 45, 48));
    Dark.setColor(QPalette::Text, QColor(225, 225, 225));
    Dark.setColor(QPalette::WindowText, QColor(225, 225, 225));
    const auto Light = [](QColor C) { return C.lightness() > 150; };
    const auto Dim = [](QColor C) { return C.lightness() < 60; };
    struct {
        const char* Name;
        bool DarkPalette;
        QColor Host; // invalid: NegCol left alone
        std::function<bool(QColor)> IsInk;
    } const Cases[] = {
        {"light palette, default", false, {}, Dim},
        {"dark palette, default", true, {}, Light},
        {"dark palette, black set by the host", true, QColor(Qt::black), Dim},
        {"dark palette, red set by the host", true, QColor(Qt::red),
         [](QColor C) { return C.red() > 150 && C.green() < 90 && C.blue() < 90; }},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        QWidget Window;
        if (C.DarkPalette) Window.setPalette(Dark);
        auto* E = new TNumEdit(&Window);
        E->setMinimumWidth(200);
        E->resize(200, E->sizeHint().height());
        E->SetMin(-1000);
        E->SetMax(1000);
        if (C.Host.isValid()) E->SetNegCol(C.Host);
        E->SetValue(-12.5);
        EXPECT_EQ(E->NegCol(), C.Host.isValid() ? C.Host : QColor(Qt::black)) << "the stored colour";
        if (C.Host.isValid()) {
            EXPECT_EQ(E->palette().color(QPalette::Active, QPalette::Text), C.Host) << "drawn exactly";
        }
        EXPECT_GT(InkOf(Render(E, 1), Qt::white, C.IsInk).Count, 10);
    }
    // A palette turned dark after a negative value was shown re-chooses the default's colour.
    QWidget Window;
    auto* E = new TNumEdit(&Window);
    E->resize(200, E->sizeHint().height());
    E->SetMin(-1000);
    E->SetValue(-12.5);
    Window.setPalette(Dark);
    EXPECT_GT(InkOf(Render(E, 1), Qt::white, Light).Count, 10);
}
