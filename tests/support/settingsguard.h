// Settings for number text tests: the comma-decimal record, and a guard that puts both global
// settings records back at the end of a test that changes them.
#pragma once

#include <qxnum/formatsettings.h>

namespace qxnum::test {

inline TFormatSettings CommaSettings() {
    TFormatSettings S = TFormatSettings::Invariant();
    S.DecimalSeparator = QLatin1Char(',');
    S.ThousandSeparator = QLatin1Char('.');
    return S;
}

class SettingsGuard {
public:
    SettingsGuard() = default;
    SettingsGuard(const TFormatSettings& Format, const TFormatSettings& NumInp) {
        FormatSettings = Format;
        NumInpFormatSettings = NumInp;
    }
    ~SettingsGuard() {
        FormatSettings = SavedFormat;
        NumInpFormatSettings = SavedNumInp;
    }
    SettingsGuard(const SettingsGuard&) = delete;
    SettingsGuard& operator=(const SettingsGuard&) = delete;

private:
    TFormatSettings SavedFormat = FormatSettings, SavedNumInp = NumInpFormatSettings;
};

} // namespace qxnum::test
