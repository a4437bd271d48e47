#include <qxnum/qxnum.h>

#include <cstdio>

int main() {
    using namespace qxnum;
    FormatSettings = TFormatSettings::Invariant();
    NumInpFormatSettings = TFormatSettings::Invariant();
    const QString Text = ParToStr(ptPress, usSI, QString(), true, 250000.0L);
    std::printf("%s\n", Text.toUtf8().constData());
    return Text == QStringLiteral("2.500") ? 0 : 1;
}
