// Qt Designer plugin: every widget of the library in the widget box group "QXNumCtrls".
//
// The collection makes one entry per widget class; each entry creates the real widget, so what
// Designer shows is what the program shows. The labelled numeric input and field place their name
// and unit labels beside them in the form. TFieldFrame is a container: fields dropped on it are its
// own, as a field form finds them.
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numedit.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/widgets/numinp.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <functional>

namespace {

using TFactory = std::function<QWidget*(QWidget*)>;

struct TEntry {
    const char* Class;  // without the namespace
    const char* Header; // as a host includes it
    const char* Mark;   // the icon's text
    const char* ToolTip;
    const char* WhatsThis;
    QSize Size;
    bool Container;
    TFactory Make;
};

// A small icon: the widget's mark in a rounded frame, drawn at two sizes so it stays sharp.
QIcon MakeIcon(const QString& Mark) {
    QIcon Icon;
    for (int Side : {22, 44}) {
        QPixmap Pm(Side, Side);
        Pm.fill(Qt::transparent);
        QPainter P(&Pm);
        P.setRenderHint(QPainter::Antialiasing);
        P.setPen(QPen(QColor(40, 80, 140), Side / 14.0));
        P.setBrush(QColor(230, 238, 250));
        P.drawRoundedRect(QRectF(1.5, 3.5, Side - 3.0, Side - 7.0), Side / 8.0, Side / 8.0);
        QFont F;
        F.setPixelSize(Side * 9 / 22);
        F.setBold(true);
        P.setFont(F);
        P.setPen(QColor(20, 40, 80));
        P.drawText(Pm.rect(), Qt::AlignCenter, Mark);
        P.end();
        Icon.addPixmap(Pm);
    }
    return Icon;
}

class TWidgetPlugin : public QObject, public QDesignerCustomWidgetInterface {
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    TWidgetPlugin(TEntry Entry, QObject* Parent) : QObject(Parent), FEntry(std::move(Entry)) {}

    QString name() const override { return QStringLiteral("qxnum::") + QLatin1String(FEntry.Class); }
    QString group() const override { return QStringLiteral("QXNumCtrls"); }
    QString toolTip() const override { return QLatin1String(FEntry.ToolTip); }
    QString whatsThis() const override { return QLatin1String(FEntry.WhatsThis); }
    QString includeFile() const override { return QLatin1String(FEntry.Header); }
    QIcon icon() const override { return MakeIcon(QLatin1String(FEntry.Mark)); }
    bool isContainer() const override { return FEntry.Container; }
    QWidget* createWidget(QWidget* Parent) override { return FEntry.Make(Parent); }
    bool isInitialized() const override { return FInitialized; }
    void initialize(QDesignerFormEditorInterface*) override { FInitialized = true; }
    QString domXml() const override {
        // The object name starts lower-case, as Designer names widgets.
        QString Object = QLatin1String(FEntry.Class).mid(1);
        Object[0] = Object[0].toLower();
        return QStringLiteral("<ui language=\"c++\">\n"
                              " <widget class=\"%1\" name=\"%2\">\n"
                              "  <property name=\"geometry\"><rect><x>0</x><y>0</y>"
                              "<width>%3</width><height>%4</height></rect></property>\n"
                              " </widget>\n"
                              "</ui>\n")
            .arg(name(), Object)
            .arg(FEntry.Size.width())
            .arg(FEntry.Size.height());
    }

private:
    TEntry FEntry;
    bool FInitialized = false;
};

template <typename T> TFactory Make() {
    return [](QWidget* Parent) -> QWidget* { return new T(Parent); };
}

} // namespace

class TQXNumDesignerCollection : public QObject, public QDesignerCustomWidgetCollectionInterface {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    explicit TQXNumDesignerCollection(QObject* Parent = nullptr) : QObject(Parent) {
        using namespace qxnum;
        const TEntry Entries[] = {
            {"TNumEdit", "qxnum/widgets/numedit.h", "1.5", "Numeric edit",
             "A number held in SI base units, shown in SI or Imperial units with its picture and limits.",
             QSize(100, 24), false, Make<TNumEdit>()},
            {"TNumInp", "qxnum/widgets/numinp.h", "[1]", "Labelled numeric input",
             "A numeric edit with a name label and a unit label that follow it.", QSize(100, 24), false,
             Make<TNumInp>()},
            {"TNumFld", "qxnum/widgets/numfld.h", "F1", "Numeric field",
             "A labelled numeric input that stores itself in XML and streams.", QSize(100, 24), false,
             Make<TNumFld>()},
            {"TStringFld", "qxnum/widgets/fields.h", "Ab", "Text field", "A line edit that stores its text.",
             QSize(140, 24), false, Make<TStringFld>()},
            {"TMemoFld", "qxnum/widgets/fields.h", "Txt", "Memo field",
             "A plain text edit that stores its lines.", QSize(180, 80), false, Make<TMemoFld>()},
            {"TCheckFld", "qxnum/widgets/fields.h", "[x]", "Check box field",
             "A check box that stores its state.", QSize(120, 22), false, Make<TCheckFld>()},
            {"TRadioBtnFld", "qxnum/widgets/fields.h", "(o)", "Radio button field",
             "A radio button that stores its state.", QSize(120, 22), false, Make<TRadioBtnFld>()},
            {"TRadioGrpFld", "qxnum/widgets/fields.h", "(o)o", "Radio group field",
             "A group of radio buttons that stores the chosen item.", QSize(160, 100), false,
             Make<TRadioGrpFld>()},
            {"TCheckListBoxFld", "qxnum/widgets/fields.h", "[x]=", "Check list field",
             "A list of checkable items that stores each item's state.", QSize(160, 100), false,
             Make<TCheckListBoxFld>()},
            {"TComboBoxFld", "qxnum/widgets/fields.h", "Cb", "Combo box field",
             "A combo box that stores its choice and text.", QSize(140, 24), false, Make<TComboBoxFld>()},
            {"TDateTimePickerFld", "qxnum/widgets/fields.h", "D/T", "Date and time field",
             "A date-time edit that stores its moment.", QSize(160, 24), false, Make<TDateTimePickerFld>()},
            {"TNumGrid", "qxnum/widgets/numgrid.h", "#", "Numeric grid",
             "A table of typed columns with clipboard exchange, look-up and undo; stores its cells.",
             QSize(320, 160), false, Make<TNumGrid>()},
            {"TTimeSeriesGrid", "qxnum/widgets/timeseriesgrid.h", "t#", "Time-series grid",
             "A numeric grid whose first column is an ascending time.", QSize(320, 160), false,
             Make<TTimeSeriesGrid>()},
            {"TNumGridNavigator", "qxnum/widgets/numgridnav.h", ">|", "Grid navigator",
             "Buttons that move through, insert, delete and clear the rows of a numeric grid.",
             QSize(275, 25), false, Make<TNumGridNavigator>()},
            {"TFieldFrame", "qxnum/widgets/fieldform.h", "[ ]", "Field frame",
             "A frame whose fields a field form reads and writes as one component.", QSize(200, 120), true,
             Make<TFieldFrame>()},
        };
        for (const TEntry& E : Entries)
            FWidgets.append(new TWidgetPlugin(E, this));
    }

    QList<QDesignerCustomWidgetInterface*> customWidgets() const override { return FWidgets; }

private:
    QList<QDesignerCustomWidgetInterface*> FWidgets;
};

#include "qxnumdesigner.moc"
