// The labelled numeric input: label placement, captions, names, and labels following the edit.
#include <qxnum/registry.h>
#include <qxnum/widgets/numinp.h>

#include <QAccessible>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace qxnum;

namespace {

// A form holding one labelled input at (100, 60), 85 x 24.
struct TForm {
    QWidget W;
    TNumInp* E;
    TForm() {
        W.setObjectName(QStringLiteral("Form1"));
        W.resize(400, 200);
        E = new TNumInp(&W);
        E->setObjectName(QStringLiteral("Pressure"));
        E->SetBounds(100, 60, 85, 24);
    }
};

} // namespace

TEST(NumInpLabels, NewControlShowsNameLeftAndUnitRight) {
    TForm F;
    TNumFldBoundLabel* Name = F.E->EditLabel();
    TNumFldBoundLabel* Unit = F.E->EditUnitLabel();
    ASSERT_TRUE(Name && Unit);
    EXPECT_EQ(Name->Caption(), QStringLiteral("Pressure"));
    EXPECT_EQ(Unit->Caption(), QStringLiteral("Unit"));
    EXPECT_EQ(Name->parentWidget(), &F.W);
    EXPECT_EQ(Name->buddy(), F.E);
    EXPECT_EQ(Name->Left() + Name->Width() + 4, 100);
    EXPECT_EQ(Name->Top(), 60 + (24 - Name->Height()) / 2);
    EXPECT_EQ(Unit->Left(), 100 + 85 + 4);
    EXPECT_EQ(Unit->Top(), 60 + (24 - Unit->Height()) / 2);
    EXPECT_EQ(Name->size(), Name->sizeHint());
}

TEST(NumInpLabels, PositionsAndSpacings) {
    struct Case {
        TLabelPosition Pos;
        Qt::Alignment Align;
        int Spacing;
    };
    const Case Cases[] = {
        {lpAbove, Qt::AlignLeft, 4},  {lpAbove, Qt::AlignRight, 2}, {lpAbove, Qt::AlignHCenter, 0},
        {lpBelow, Qt::AlignLeft, 7},  {lpBelow, Qt::AlignRight, 3}, {lpLeft, Qt::AlignLeft, 10},
        {lpRight, Qt::AlignLeft, -3},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.Pos << " " << C.Align << " " << C.Spacing);
        TForm F;
        TNumFldBoundLabel* L = F.E->EditLabel();
        L->setAlignment(C.Align | Qt::AlignVCenter);
        L->setText(QStringLiteral("Inlet pressure"));
        F.E->SetEditLabelSpacing(C.Spacing);
        F.E->SetEditLabelPosition(C.Pos);
        const int W = L->width(), H = L->height();
        // Where the label belongs next to an edit at R; above and below it follows its alignment.
        const auto Expected = [&](const QRect& R) {
            int X = R.left();
            if (C.Align == Qt::AlignRight) X = R.left() + R.width() - W;
            if (C.Align == Qt::AlignHCenter) X = R.left() + (R.width() - W) / 2;
            switch (C.Pos) {
            case lpAbove:
                return QPoint(X, R.top() - H - C.Spacing);
            case lpBelow:
                return QPoint(X, R.top() + R.height() + C.Spacing);
            case lpLeft:
                return QPoint(R.left() - W - C.Spacing, R.top() + (R.height() - H) / 2);
            default:
                return QPoint(R.left() + R.width() + C.Spacing, R.top() + (R.height() - H) / 2);
            }
        };
        EXPECT_EQ(L->pos(), Expected(QRect(100, 60, 85, 24)));
        F.E->SetBounds(150, 90, 120, 30); // moving and resizing the edit carries the label along
        EXPECT_EQ(L->pos(), Expected(QRect(150, 90, 120, 30)));
    }
}

TEST(NumInpLabels, LabelsFollowMovesOfAShownControlAndCaptionSizes) {
    TForm F;
    F.W.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&F.W));
    F.E->move(120, 100);
    TNumFldBoundLabel* Unit = F.E->EditUnitLabel();
    EXPECT_EQ(Unit->x(), 120 + F.E->width() + 4);
    // A caption that changes size is placed again, right-aligned labels too.
    F.E->SetEditLabelPosition(lpAbove);
    TNumFldBoundLabel* Name = F.E->EditLabel();
    Name->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Name->setText(QStringLiteral("A much longer caption than before"));
    EXPECT_EQ(Name->x() + Name->width(), 120 + F.E->width());
    QFont Big = Name->font();
    Big.setPointSize(Big.pointSize() * 2);
    Name->setFont(Big);
    EXPECT_EQ(Name->size(), Name->sizeHint());
    EXPECT_EQ(Name->y() + Name->height() + 4, 100);
}

TEST(NumInpLabels, CaptionsFollowNameParTypeAndUnitSystemUntilSetByHand) {
    TForm F;
    TNumFldBoundLabel* Name = F.E->EditLabel();
    F.E->setObjectName(QStringLiteral("Inlet"));
    EXPECT_EQ(Name->Caption(), QStringLiteral("Inlet"));
    Name->SetCaption(QStringLiteral("&Inlet pressure"));
    F.E->setObjectName(QStringLiteral("Outlet"));
    EXPECT_EQ(Name->Caption(), QStringLiteral("&Inlet pressure"));

    TNumFldBoundLabel* Unit = F.E->EditUnitLabel();
    F.E->SetParType(ptNone);
    EXPECT_EQ(Unit->Caption(), QString());
    F.E->SetParType(ptPress);
    EXPECT_EQ(Unit->Caption(), QStringLiteral("[bar]"));
    F.E->SetUnitSystem(usImperial);
    EXPECT_EQ(Unit->Caption(), QStringLiteral("[psi]"));

    F.E->SetCustomUnitStr(QStringLiteral("bar(g)"));
    EXPECT_EQ(Unit->Caption(), QStringLiteral("bar(g)"));
    F.E->SetUnitSystem(usSI);
    F.E->SetParType(ptTemp);
    EXPECT_EQ(Unit->Caption(), QStringLiteral("bar(g)"));
    F.E->SetCustomUnitStr(QStringLiteral("  "));
    EXPECT_EQ(Unit->Caption(), QStringLiteral("[K]"));

    // A unit text that changes size moves nothing but itself.
    EXPECT_EQ(Unit->x(), 100 + 85 + 4);
    EXPECT_EQ(Unit->size(), Unit->sizeHint());
}

TEST(NumInpLabels, VisibilityEnabledAndDirectionFollowTheControl) {
    TForm F;
    F.W.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&F.W));
    TNumFldBoundLabel* Name = F.E->EditLabel();
    TNumFldBoundLabel* Unit = F.E->EditUnitLabel();
    const auto Visible = [&] { return std::pair(Name->isVisible(), Unit->isVisible()); };
    const auto Enabled = [&] { return std::pair(Name->isEnabled(), Unit->isEnabled()); };
    EXPECT_EQ(Visible(), std::pair(true, true));
    F.E->hide();
    EXPECT_EQ(Visible(), std::pair(false, false));
    F.E->SetUnitVisible(false);
    F.E->show();
    EXPECT_EQ(Visible(), std::pair(true, false));
    F.E->SetUnitVisible(true);
    EXPECT_EQ(Visible(), std::pair(true, true));

    F.E->SetCopyVisible(false); // the labels stay as they are
    F.E->hide();
    EXPECT_TRUE(Name->isVisible());
    F.E->SetCopyVisible(true);
    F.E->show();

    F.E->setEnabled(false);
    EXPECT_EQ(Enabled(), std::pair(false, false));
    F.E->setEnabled(true);
    EXPECT_TRUE(Name->isEnabled());
    F.E->SetCopyEnabled(false);
    F.E->setEnabled(false);
    EXPECT_TRUE(Name->isEnabled());

    F.E->setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(Name->layoutDirection(), Qt::RightToLeft);
    EXPECT_EQ(Unit->layoutDirection(), Qt::RightToLeft);

    // A control added to a form that is already shown appears with its labels on show().
    auto* Late = new TNumInp(&F.W);
    Late->SetBounds(100, 150, 85, 24);
    EXPECT_FALSE(Late->EditLabel()->isVisible());
    Late->show();
    EXPECT_TRUE(Late->EditLabel()->isVisible());
    EXPECT_TRUE(Late->EditUnitLabel()->isVisible());
}

TEST(NumInpLabels, LabelsFollowANewParent) {
    TForm F;
    QWidget Other;
    Other.setObjectName(QStringLiteral("Form2"));
    auto* Taken = new QWidget(&Other);
    Taken->setObjectName(QStringLiteral("SubLabel1"));
    const QString OldName = F.E->EditLabel()->objectName();
    ASSERT_EQ(OldName, QStringLiteral("SubLabel1"));

    F.E->setParent(&Other);
    EXPECT_EQ(F.E->EditLabel()->parentWidget(), &Other);
    EXPECT_EQ(F.E->EditUnitLabel()->parentWidget(), &Other);
    // Names stay unique in the new owner.
    EXPECT_NE(F.E->EditLabel()->objectName(), QStringLiteral("SubLabel1"));
    EXPECT_NE(F.E->EditLabel()->objectName(), F.E->EditUnitLabel()->objectName());
    EXPECT_EQ(F.E->EditUnitLabel()->x(), F.E->x() + F.E->width() + 4);

    // Parentless, the labels must not turn into windows of their own.
    F.E->setParent(nullptr);
    F.E->show();
    EXPECT_FALSE(F.E->EditLabel()->isVisible());
    EXPECT_FALSE(F.E->EditUnitLabel()->isVisible());
    delete F.E;
}

TEST(NumInpLabels, LabelNamesAreUniqueInTheOwner) {
    QWidget Form;
    auto* Existing = new QWidget(&Form);
    Existing->setObjectName(QStringLiteral("SubLabel2"));
    auto* Inner = new QWidget(&Form);
    auto* A = new TNumInp(Inner);
    auto* B = new TNumInp(&Form);
    const QStringList Names = {A->EditLabel()->objectName(), A->EditUnitLabel()->objectName(),
                               B->EditLabel()->objectName(), B->EditUnitLabel()->objectName()};
    EXPECT_EQ(Names, QStringList({QStringLiteral("SubLabel1"), QStringLiteral("SubLabel3"),
                                  QStringLiteral("SubLabel4"), QStringLiteral("SubLabel5")}));
}

TEST(NumInpLabels, DeletedLabelLeavesTheControlWorking) {
    TForm F;
    delete F.E->EditLabel();
    EXPECT_EQ(F.E->EditLabel(), nullptr);
    F.E->SetEditLabelPosition(lpAbove); // not stored without the label
    EXPECT_EQ(F.E->EditLabelPosition(), lpLeft);
    F.E->SetEditLabelSpacing(9);
    F.E->SetBounds(10, 10, 90, 24);
    F.E->setObjectName(QStringLiteral("Renamed"));
    F.E->SetParType(ptMass);
    F.E->hide();
    F.E->show();
    F.E->setEnabled(false);
    EXPECT_EQ(F.E->EditUnitLabel()->Caption(), QStringLiteral("[kg]"));

    delete F.E->EditUnitLabel();
    F.E->SetCustomUnitStr(QStringLiteral("kg"));
    F.E->SetUnitVisible(false);
    F.E->SetUnitSystem(usImperial);
    EXPECT_EQ(F.E->EditUnitLabel(), nullptr);

    F.E->SetupInternalEditUnitLabels();
    ASSERT_NE(F.E->EditLabel(), nullptr);
    ASSERT_NE(F.E->EditUnitLabel(), nullptr);
    EXPECT_EQ(F.E->EditLabel()->Caption(), QStringLiteral("Renamed"));
    EXPECT_EQ(F.E->EditLabel()->x() + F.E->EditLabel()->width() + 9, 10);
}

TEST(NumInpLabels, DestroyingTheFormInAnyOrderIsSafe) {
    // The form deletes its children in list order: the edit before its labels, or after them.
    for (const bool LabelsFirst : {false, true}) {
        auto Form = std::make_unique<QWidget>();
        auto* E = new TNumInp(Form.get());
        if (LabelsFirst) E->raise(); // moves the edit to the end of the child list
        const QObjectList& Kids = Form->children();
        ASSERT_EQ(Kids.indexOf(E) > Kids.indexOf(E->EditLabel()), LabelsFirst);
        Form.reset(); // AddressSanitizer reports any use of a freed label
    }
}

TEST(NumInpAccessibility, NameAndDescriptionComeFromTheLabels) {
    TForm F;
    EXPECT_EQ(F.E->accessibleName(), QStringLiteral("Pressure"));
    EXPECT_EQ(F.E->accessibleDescription(), QStringLiteral("Unit"));
    F.E->EditLabel()->setText(QStringLiteral("&Inlet pressure"));
    F.E->SetParType(ptPress);
    EXPECT_EQ(F.E->accessibleName(), QStringLiteral("Inlet pressure"));
    EXPECT_EQ(F.E->accessibleDescription(), QStringLiteral("[bar]"));
    QAccessibleInterface* Iface = QAccessible::queryAccessibleInterface(F.E);
    ASSERT_NE(Iface, nullptr);
    EXPECT_EQ(Iface->text(QAccessible::Name), QStringLiteral("Inlet pressure"));
}

TEST(NumInpRegistry, CreatedByClassName) {
    QWidget Owner;
    QObject* O = CreateComponent(QStringLiteral("TNumInp"), &Owner);
    auto* E = qobject_cast<TNumInp*>(O);
    ASSERT_NE(E, nullptr);
    EXPECT_EQ(E->parentWidget(), &Owner);
    EXPECT_EQ(E->EditLabel()->parentWidget(), &Owner);
}
