// The numeric field as one item of a Qt layout: its labels take their room from the layout's cell,
// at device pixel ratios 1 and 2 (the second in a child process started with QT_SCALE_FACTOR=2).
#include <qxnum/widgets/numfld.h>

#include "widgettest.h"

#include <QApplication>
#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>

using namespace qxnum;

namespace {

enum class THost { FormOwnLabel, FormLayoutLabel, Grid, HBox };

const char* HostName(THost H) {
    switch (H) {
    case THost::FormOwnLabel:
        return "QFormLayout, field's label";
    case THost::FormLayoutLabel:
        return "QFormLayout, layout's label";
    case THost::Grid:
        return "QGridLayout";
    default:
        return "QHBoxLayout";
    }
}

// A window with the field between neighbours of its layout.
struct TLayoutForm {
    QWidget W;
    TNumFld* F;
    QList<QWidget*> Neighbours;

    TLayoutForm(THost Host, TLabelPosition NamePos, TLabelPosition UnitPos, Qt::LayoutDirection Dir) {
        W.setLayoutDirection(Dir);
        F = new TNumFld(&W);
        F->EditLabel()->SetCaption(QStringLiteral("Inlet pressure"));
        F->SetParType(ptPress);
        F->SetEditLabelPosition(NamePos);
        F->SetEditUnitLabelPosition(UnitPos);
        auto* Before = new QLineEdit(&W);
        auto* After = new QPushButton(QStringLiteral("Apply"), &W);
        Neighbours = {Before, After};
        switch (Host) {
        case THost::FormOwnLabel:
        case THost::FormLayoutLabel: {
            auto* L = new QFormLayout(&W);
            L->addRow(QStringLiteral("Outlet:"), Before);
            if (Host == THost::FormOwnLabel) {
                L->addRow(F);
            } else {
                F->SetNameLabelVisible(false);
                L->addRow(QStringLiteral("Inlet:"), F);
                Neighbours << L->labelForField(F);
            }
            L->addRow(After);
            Neighbours << L->labelForField(Before);
            break;
        }
        case THost::Grid: {
            auto* L = new QGridLayout(&W);
            auto* Below = new QCheckBox(QStringLiteral("Below"), &W);
            L->addWidget(Before, 0, 0);
            L->addWidget(F, 0, 1);
            L->addWidget(After, 0, 2);
            L->addWidget(Below, 1, 1);
            Neighbours << Below;
            break;
        }
        case THost::HBox: {
            auto* L = new QHBoxLayout(&W);
            L->addWidget(Before);
            L->addWidget(F, 1);
            L->addWidget(After);
            break;
        }
        }
    }

    // Every rectangle inside the window, none meeting another, each label on its side.
    void Check(const char* Stage) const {
        SCOPED_TRACE(Stage);
        struct TPart {
            const char* Name;
            QRect R;
        };
        QList<TPart> Parts = {{"field", F->geometry()}};
        const auto Side = [&](const TNumFldBoundLabel* L, TLabelPosition Pos) {
            const QRect R = L->geometry(), E = F->geometry();
            switch (Pos) {
            case lpAbove:
                return R.bottom() < E.top();
            case lpBelow:
                return R.top() > E.bottom();
            case lpLeft:
                return R.right() < E.left();
            default:
                return R.left() > E.right();
            }
        };
        if (F->NameLabelVisible()) {
            EXPECT_TRUE(F->EditLabel()->isVisible());
            EXPECT_TRUE(Side(F->EditLabel(), F->EditLabelPosition()));
            Parts.append({"name label", F->EditLabel()->geometry()});
        } else {
            EXPECT_FALSE(F->EditLabel()->isVisible());
        }
        EXPECT_TRUE(F->EditUnitLabel()->isVisible());
        EXPECT_TRUE(Side(F->EditUnitLabel(), F->EditUnitLabelPosition()));
        Parts.append({"unit label", F->EditUnitLabel()->geometry()});
        for (const QWidget* N : Neighbours)
            Parts.append({N->metaObject()->className(), N->geometry()});
        const QRect Window(QPoint(0, 0), W.size());
        for (qsizetype I = 0; I < Parts.size(); ++I) {
            EXPECT_TRUE(Window.contains(Parts[I].R)) << Parts[I].Name;
            for (qsizetype J = I + 1; J < Parts.size(); ++J)
                EXPECT_FALSE(Parts[I].R.intersects(Parts[J].R)) << Parts[I].Name << " / " << Parts[J].Name;
        }
    }
};

void RunLayoutCases(qreal Dpr) {
    const TLabelPosition Positions[] = {lpAbove, lpBelow, lpLeft, lpRight};
    for (const THost Host : {THost::FormOwnLabel, THost::FormLayoutLabel, THost::Grid, THost::HBox})
        for (const TLabelPosition NamePos : Positions)
            for (const TLabelPosition UnitPos : Positions)
                for (const Qt::LayoutDirection Dir : {Qt::LeftToRight, Qt::RightToLeft}) {
                    // Direction matters little to the geometry; one name position in each host suffices.
                    if (Dir == Qt::RightToLeft && NamePos != lpLeft) continue;
                    SCOPED_TRACE(testing::Message() << HostName(Host) << ", name " << NamePos << ", unit "
                                                    << UnitPos << ", dir " << Dir << ", ratio " << Dpr);
                    TLayoutForm Form(Host, NamePos, UnitPos, Dir);
                    Form.W.show();
                    ASSERT_TRUE(QTest::qWaitForWindowExposed(&Form.W));
                    ASSERT_EQ(Form.W.windowHandle()->devicePixelRatio(), Dpr);
                    Form.Check("first pass");
                    QCoreApplication::processEvents();
                    Form.Check("later pass");
                    const int Room = Form.F->EditUnitLabel()->width() + 4;
                    Form.W.resize(Form.W.width() + 100, Form.W.height() + 20);
                    QCoreApplication::processEvents();
                    Form.Check("wider");
                    // Narrower by exactly the unit label's room: the field's new cell may equal
                    // its old edit rectangle, and must still be told apart from it.
                    Form.W.resize(Form.W.width() - Room, Form.W.height());
                    QCoreApplication::processEvents();
                    Form.Check("narrower by the unit room");

                    Form.F->setEnabled(false);
                    EXPECT_FALSE(Form.F->EditUnitLabel()->isEnabled());
                    Form.F->hide();
                    QCoreApplication::processEvents();
                    EXPECT_FALSE(Form.F->EditLabel()->isVisible());
                    EXPECT_FALSE(Form.F->EditUnitLabel()->isVisible());
                    Form.F->show();
                    QCoreApplication::processEvents();
                    Form.Check("hidden and shown again");
                }
}

} // namespace

TEST(NumFldLayout, FieldAndLabelsStayInTheirCellAtRatios1And2) {
    const bool Child = qEnvironmentVariableIsSet("QXNUM_LAYOUT_CHILD");
    RunLayoutCases(Child ? 2.0 : qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1")).toDouble());
    if (Child || HasFailure()) return;
    QProcess P;
    QProcessEnvironment Env = QProcessEnvironment::systemEnvironment();
    Env.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("2"));
    Env.insert(QStringLiteral("QXNUM_LAYOUT_CHILD"), QStringLiteral("1"));
    P.setProcessEnvironment(Env);
    P.setProcessChannelMode(QProcess::MergedChannels);
    P.start(QCoreApplication::applicationFilePath(),
            {QStringLiteral("--gtest_filter=NumFldLayout.FieldAndLabelsStayInTheirCellAtRatios1And2")});
    ASSERT_TRUE(P.waitForFinished(300000));
    EXPECT_EQ(P.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(P.exitCode(), 0) << P.readAll().toStdString();
}

TEST(NumFldLayout, SizeHintsCarryTheLabelRoomOnlyInALayout) {
    QWidget W;
    auto* F = new TNumFld(&W);
    F->EditLabel()->SetCaption(QStringLiteral("Inlet pressure"));
    const QSize Plain = F->sizeHint();
    auto* L = new QHBoxLayout(&W);
    L->addWidget(F);
    const TNumFldBoundLabel* Name = F->EditLabel();
    const TNumFldBoundLabel* Unit = F->EditUnitLabel();
    EXPECT_EQ(F->sizeHint(), QSize(Plain.width() + Name->width() + Unit->width() + 8,
                                   std::max({Plain.height(), Name->height(), Unit->height()})));
    F->SetEditLabelPosition(lpAbove);
    F->SetEditLabelSpacing(6);
    F->SetUnitVisible(false);
    EXPECT_EQ(F->sizeHint(),
              QSize(std::max(Plain.width(), Name->width()), Plain.height() + Name->height() + 6));
    // An explicit edit width leaves room for the labels too.
    F->SetEditLabelPosition(lpLeft);
    F->setMinimumWidth(300);
    W.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&W));
    QCoreApplication::processEvents();
    EXPECT_EQ(F->width(), 300);
    EXPECT_GE(W.width(), 300 + Name->width() + 6);
    EXPECT_GE(Name->x(), 0);
    // Taken out of the layout, the field is positioned by hand again.
    L->removeWidget(F);
    F->SetBounds(100, 40, 90, 24);
    EXPECT_EQ(F->sizeHint(), Plain);
    EXPECT_EQ(Name->x() + Name->width() + 6, 100);
}
