// The size of every exported class, pinned against its Qt base and the members it is meant to have.
// Hosts compile against these sizes: a new data member in a public class is a binary break and
// belongs in the class's private part. When this test fails, move the member there, or, for an
// intended break, update the expected layout here.
#include <qxnum/filer.h>
#include <qxnum/parser.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numcolumn.h>
#include <qxnum/widgets/numedit.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/numgridmodel.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/widgets/numinp.h>
#include <qxnum/widgets/numinpdlg.h>
#include <qxnum/widgets/timeseriesgrid.h>
#include <qxnum/xml.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

using namespace qxnum;

namespace {

// Layouts of the members each class is meant to hold, in declaration order.
struct TPointer {
    void* P;
};
template <typename T> struct TTwo { // TValueField<T>: the copy and the form-create value
    T A, B;
};
struct TWriterLayout {
    void* Stream;
    std::vector<quint8> Buffer;
    std::size_t BufPos;
    TStringMode StringMode;
    int CodePage;
};
struct TReaderLayout {
    void* Stream;
    bool Sequential;
    std::vector<quint8> Buffer;
    std::size_t BufPos, BufEnd;
    qint64 BufStart;
    int CodePage;
};
struct TExceptionLayout {
    QString Message;
    QByteArray Utf8; // what()
};
struct TFieldBaseLayout {
    bool ChangedAfterOK; // public
    void* D;
};
// The form's public state is the classic one (public by contract); the rest is private.
struct TFieldFormLayout {
    TStreamCode EndCode;
    TReadResultCode ReadResultCode;
    bool VersionUpdated;
    bool RevertingToDefaults;
    TXmlNode FormXmlRootNode;
    void* d;
};
// The time-series grid's time row is public by contract.
struct TTimeSeriesLayout {
    std::vector<double> TimeRow;
    std::vector<QString> TimeRowStrings;
    void* d;
};
struct TXmlErrorLayout {
    QString Reason;
    int Line, Column;
};

// Size of a class deriving from Bases... and adding Members (a layout struct) after them.
template <typename Members, typename... Bases> constexpr std::size_t Derived() {
    constexpr std::size_t A = std::max({alignof(Bases)..., alignof(Members)});
    constexpr std::size_t Raw = (sizeof(Bases) + ... + 0) + (std::is_empty_v<Members> ? 0 : sizeof(Members));
    return (Raw + A - 1) / A * A;
}
struct TNone {};

template <typename T> constexpr std::size_t ValueField() {
    return Derived<TTwo<T>, TFieldBase>();
}

} // namespace

TEST(Abi, EveryPublicClassHasItsPinnedSize) {
    const struct {
        const char* Class;
        std::size_t Actual;
        std::size_t Expected;
    } Table[] = {
        // Core
        {"Exception", sizeof(Exception), Derived<TExceptionLayout, std::exception>()},
        {"EReadError", sizeof(EReadError), Derived<qint64, Exception>()},
        {"EXmlError", sizeof(EXmlError), Derived<TXmlErrorLayout, Exception>()},
        {"INumFld", sizeof(INumFld), sizeof(void*) /* the vtable pointer only */},
        {"TWriter", sizeof(TWriter), sizeof(TWriterLayout)},
        {"TReader", sizeof(TReader), sizeof(TReaderLayout)},
        {"TQXParser", sizeof(TQXParser), sizeof(TPointer)},
        {"TXmlDocument", sizeof(TXmlDocument), sizeof(TPointer)},
        {"TXmlNode", sizeof(TXmlNode), 2 * sizeof(TPointer)},
        // The numeric edit family
        {"TCustomNumEdit", sizeof(TCustomNumEdit), Derived<TPointer, QLineEdit>()},
        {"TNumEdit", sizeof(TNumEdit), sizeof(TCustomNumEdit)},
        {"TNumFldBoundLabel", sizeof(TNumFldBoundLabel), Derived<TPointer, QLabel>()},
        {"TCustomNumInp", sizeof(TCustomNumInp), Derived<TPointer, TCustomNumEdit>()},
        {"TNumInp", sizeof(TNumInp), sizeof(TCustomNumInp)},
        // TNumFld: the public ErrorIDstring and the private part.
        {"TNumFld", sizeof(TNumFld),
         Derived<TNone, TCustomNumInp, TValueField<QString>, QString, TPointer>()},
        // The fields
        {"TFieldBase", sizeof(TFieldBase), Derived<TFieldBaseLayout, INumFld>()},
        {"TBoolField", sizeof(TBoolField), ValueField<bool>()},
        {"TStringFld", sizeof(TStringFld), sizeof(QLineEdit) + ValueField<QString>()},
        {"TMemoFld", sizeof(TMemoFld), sizeof(QPlainTextEdit) + ValueField<QString>()},
        {"TCheckFld", sizeof(TCheckFld), Derived<TNone, QCheckBox, TBoolField>()},
        {"TRadioBtnFld", sizeof(TRadioBtnFld), Derived<TNone, QRadioButton, TBoolField>()},
        {"TRadioGrpFld", sizeof(TRadioGrpFld), sizeof(QGroupBox) + ValueField<int>()},
        {"TCheckListBoxFld", sizeof(TCheckListBoxFld),
         sizeof(QListWidget) + ValueField<QList<TCheckBoxState>>()},
        {"TComboBoxFld", sizeof(TComboBoxFld), Derived<TNone, QComboBox, TFieldBase>()},
        {"TDateTimePickerFld", sizeof(TDateTimePickerFld), sizeof(QDateTimeEdit) + ValueField<QDateTime>()},
        // The grid: its state chains from the field's private part; columns and titles own theirs.
        {"TNumGrid", sizeof(TNumGrid), Derived<TNone, QAbstractScrollArea, TFieldBase>()},
        {"TNumColTitle", sizeof(TNumColTitle), Derived<TPointer, QObject>()},
        {"TNumColumn", sizeof(TNumColumn), Derived<TPointer, QObject>()},
        {"TNumColumns", sizeof(TNumColumns), Derived<TPointer, QObject>()},
        {"TNumGridModel", sizeof(TNumGridModel), Derived<TPointer, QAbstractTableModel>()},
        {"TTimeSeriesGrid", sizeof(TTimeSeriesGrid), Derived<TTimeSeriesLayout, TNumGrid>()},
        {"TNumgButton", sizeof(TNumgButton), Derived<TPointer, QToolButton>()},
        {"TNumGridNavigator", sizeof(TNumGridNavigator), Derived<TPointer, QWidget>()},
        {"TNumInpDlgForm", sizeof(TNumInpDlgForm), Derived<TPointer, QDialog>()},
        {"TFieldFrame", sizeof(TFieldFrame), Derived<TPointer, QFrame>()},
        {"TFieldForm", sizeof(TFieldForm), Derived<TFieldFormLayout, QDialog>()},
    };
    for (const auto& R : Table)
        EXPECT_EQ(R.Actual, R.Expected) << R.Class
                                        << ": the size of a public class changed; new state belongs in its "
                                           "private class (see the comment at the top of this file)";
}
