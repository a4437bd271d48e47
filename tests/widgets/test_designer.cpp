// The Designer plugin, loaded as Designer loads it, and a form drawn with the library's widgets
// compiled by uic: every widget is offered, made and described, and a form's properties reach
// the widgets.
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include "ui_FieldFormClient.h"
#include "ui_caseform.h"

#include <QDomDocument>
#include <QPluginLoader>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(DesignerPlugin, OffersEveryWidgetAndMakesIt) {
    QPluginLoader Loader(QStringLiteral(QXNUM_DESIGNER_PLUGIN));
    QObject* Instance = Loader.instance();
    ASSERT_NE(Instance, nullptr) << Loader.errorString().toStdString();
    auto* Collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(Instance);
    ASSERT_NE(Collection, nullptr);
    const QStringList Expected = {"qxnum::TNumEdit",
                                  "qxnum::TNumInp",
                                  "qxnum::TNumFld",
                                  "qxnum::TStringFld",
                                  "qxnum::TMemoFld",
                                  "qxnum::TCheckFld",
                                  "qxnum::TRadioBtnFld",
                                  "qxnum::TRadioGrpFld",
                                  "qxnum::TCheckListBoxFld",
                                  "qxnum::TComboBoxFld",
                                  "qxnum::TDateTimePickerFld",
                                  "qxnum::TNumGrid",
                                  "qxnum::TTimeSeriesGrid",
                                  "qxnum::TNumGridNavigator",
                                  "qxnum::TFieldFrame"};
    QStringList Offered;
    QWidget Parent;
    for (QDesignerCustomWidgetInterface* W : Collection->customWidgets()) {
        SCOPED_TRACE(W->name().toStdString());
        Offered << W->name();
        EXPECT_EQ(W->group(), QStringLiteral("QXNumCtrls"));
        EXPECT_FALSE(W->toolTip().isEmpty());
        EXPECT_FALSE(W->icon().isNull());
        EXPECT_TRUE(W->includeFile().startsWith(QStringLiteral("qxnum/widgets/")));
        EXPECT_EQ(W->isContainer(), W->name() == QStringLiteral("qxnum::TFieldFrame"));
        std::unique_ptr<QWidget> Made(W->createWidget(&Parent));
        ASSERT_NE(Made, nullptr);
        EXPECT_EQ(QString::fromLatin1(Made->metaObject()->className()), W->name());
        QDomDocument Dom;
        ASSERT_TRUE(Dom.setContent(W->domXml()));
        const QDomElement Widget = Dom.documentElement().firstChildElement(QStringLiteral("widget"));
        EXPECT_EQ(Widget.attribute(QStringLiteral("class")), W->name());
        EXPECT_FALSE(Widget.attribute(QStringLiteral("name")).isEmpty());
    }
    EXPECT_EQ(Offered, Expected);
}

TEST(DesignerForm, UicBuildsTheFormWithItsProperties) {
    QWidget Form;
    Ui::CaseFields Ui;
    Ui.setupUi(&Form);
    EXPECT_EQ(Ui.Pamb->ParType(), qxnum::ptPress);
    EXPECT_FALSE(Ui.Pamb->NameLabelVisible());
    EXPECT_EQ(Ui.Pamb->Max(), 200000.0L);
    EXPECT_EQ(Ui.Mission->ColCount(), 3);
    EXPECT_EQ(Ui.AntiIce->parentWidget(), Ui.Options) << "a field on a frame belongs to the frame";
    EXPECT_EQ(Ui.MissionNavigator->NumGrid(), nullptr);
}

// The template's fields, set up in a form's client area, are the form's own.
TEST(DesignerForm, TheFieldFormTemplateFillsTheClientArea) {
    qxnum::TFieldForm Form;
    Form.setObjectName(QStringLiteral("TemplateForm"));
    Ui::FieldFormClient Ui;
    Ui.setupUi(Form.ClientArea());
    Form.FormCreate();
    Ui.Pressure->SetValue(2e5L);
    EXPECT_EQ(Form.findChild<qxnum::TNumFld*>(QStringLiteral("Pressure")), Ui.Pressure);
    Form.ResetToCreateFormState(true);
    EXPECT_EQ(Ui.Pressure->GetValue(), 0.0L) << "reset to the value the template gave";
}

} // namespace
