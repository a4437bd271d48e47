// Text of the XML layer: names, escaping on write, decoding on read, the character checks of the
// loader, and the text forms of the typed values.
#include "xml_p.h"

#include "textcodec.h"
#include "tr_p.h"

#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>

namespace qxnum {
namespace xmlimpl {

namespace {

// The XML Name production, simplified: non-ASCII characters are all accepted as name characters.
bool IsXmlName(const QString& Name) {
    if (Name.isEmpty()) return false;
    for (qsizetype I = 0; I < Name.size(); ++I) {
        const QChar Q = Name[I];
        const char16_t C = Q.unicode();
        if (C >= 0x80) {
            if (C == 0xFFFE || C == 0xFFFF) return false;
            // Surrogates only in pairs: a lone one would not survive the UTF-8 form.
            if (Q.isHighSurrogate() && !(I + 1 < Name.size() && Name[I + 1].isLowSurrogate())) return false;
            if (Q.isLowSurrogate() && !(I > 0 && Name[I - 1].isHighSurrogate())) return false;
            continue;
        }
        const bool Start = (C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || C == '_' || C == ':';
        const bool More = (C >= '0' && C <= '9') || C == '-' || C == '.';
        if (!Start && !(I > 0 && More)) return false;
    }
    return true;
}

void AppendCharRef(std::string& Out, unsigned C) {
    Out += "&#";
    Out += std::to_string(C);
    Out += ';';
}

void AppendUtf8(std::string& Out, char32_t C) {
    if (C < 0x80) {
        Out += static_cast<char>(C);
    } else if (C < 0x800) {
        Out += static_cast<char>(0xC0 | (C >> 6));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else if (C < 0x10000) {
        Out += static_cast<char>(0xE0 | (C >> 12));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else {
        Out += static_cast<char>(0xF0 | (C >> 18));
        Out += static_cast<char>(0x80 | ((C >> 12) & 0x3F));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    }
}

// The number of a character reference body "#65" or "#x41"; NoCharRef when it is not one, and a
// value above U+10FFFF when its digits do not fit (refused, not literal text).
constexpr long long NoCharRef = -1;
constexpr long long TooLargeCharRef = 0x110000;

long long CharRefValue(std::string_view Body) {
    const bool Hex = Body.size() >= 2 && Body[1] == 'x';
    long long V = 0;
    const std::errc Ec = ParseInteger(Body.substr(Hex ? 2 : 1), V, Hex ? 16 : 10, false);
    if (Ec == std::errc::result_out_of_range) return TooLargeCharRef;
    return Ec == std::errc() ? V : NoCharRef;
}

// References to controls other than tab and line ends are accepted for files of earlier versions,
// which wrote them.
bool IsCharRefAllowed(long long V) {
    return V > 0 && V <= 0x10FFFF && !(V >= 0xD800 && V <= 0xDFFF) && V != 0xFFFE && V != 0xFFFF;
}

// A reference starting at S[0] == '&'; on success appends the character and returns the length
// of the reference, otherwise 0 (the '&' is then literal text).
std::size_t DecodeReference(std::string_view S, std::string& Out) {
    const std::size_t Semi = S.find(';', 1);
    if (Semi == std::string_view::npos || Semi > 12) return 0;
    const std::string_view Body = S.substr(1, Semi - 1);
    char32_t C = 0;
    if (Body == "lt")
        C = '<';
    else if (Body == "gt")
        C = '>';
    else if (Body == "amp")
        C = '&';
    else if (Body == "quot")
        C = '"';
    else if (Body == "apos")
        C = '\'';
    else if (Body.size() >= 2 && Body[0] == '#') {
        const long long V = CharRefValue(Body);
        if (!IsCharRefAllowed(V)) return 0; // refused on load; never reached for a loaded text
        C = static_cast<char32_t>(V);
    } else {
        return 0;
    }
    AppendUtf8(Out, C);
    return Semi + 1;
}

bool NeedsDecoding(std::string_view Raw, TDecode Mode) {
    // memchr per character of interest: row texts of a large grid are long and need none.
    const auto Has = [Raw](char C) { return !Raw.empty() && std::memchr(Raw.data(), C, Raw.size()); };
    return Has('\r') || (Mode != dCData && Has('&')) || (Mode == dAttribute && (Has('\n') || Has('\t')));
}

// Trimmed ASCII text, or empty when the text holds anything else (which no number does).
std::string AsciiTrimmed(const QString& Text) {
    const QString T = Text.trimmed();
    std::string S;
    S.reserve(static_cast<std::size_t>(T.size()));
    for (const QChar C : T) {
        if (C.unicode() >= 0x80) return {};
        S += static_cast<char>(C.unicode());
    }
    return S;
}

// Shortest text that reads back to exactly Value, "INF", "-INF", "NAN" for the others.
template <typename T> QString ShortestText(T Value) {
    if (std::isnan(Value)) return QStringLiteral("NAN");
    if (std::isinf(Value)) return Value > 0 ? QStringLiteral("INF") : QStringLiteral("-INF");
    char Buf[64];
    const auto R = std::to_chars(Buf, Buf + sizeof Buf, Value);
    return QString::fromLatin1(Buf, static_cast<qsizetype>(R.ptr - Buf));
}

} // namespace

std::string Utf8(const QString& S) {
    const QByteArray B = S.toUtf8();
    return std::string(B.constData(), static_cast<std::size_t>(B.size()));
}

QString FromUtf8(std::string_view S) {
    return detail::Utf8KeepBom(QByteArrayView(S.data(), static_cast<qsizetype>(S.size())));
}

std::string CheckedName(const QString& Name) {
    if (!IsXmlName(Name))
        throw EXmlError(detail::Tr("qxnum::TXmlNode", "\"%1\" is not a valid XML name").arg(Name), 0, 0);
    // Names are nearly always ASCII (a grid writes one per row): narrowed without a UTF-8 copy.
    std::string Out(static_cast<std::size_t>(Name.size()), '\0');
    for (qsizetype I = 0; I < Name.size(); ++I) {
        const char16_t C = Name[I].unicode();
        if (C >= 0x80) return Utf8(Name);
        Out[static_cast<std::size_t>(I)] = static_cast<char>(C);
    }
    return Out;
}

// Printable ASCII that stands for itself in text and attribute values alike.
constexpr auto PlainAscii = [] {
    std::array<bool, 128> T{};
    for (char16_t C = 0x20; C < 0x80; ++C)
        T[C] = C != '&' && C != '<' && C != '>' && C != '"';
    return T;
}();

std::string Escape(const QString& Value, bool Attribute) {
    const auto N = static_cast<std::size_t>(Value.size());
    const char16_t* U = reinterpret_cast<const char16_t*>(Value.utf16());
    // Most values (numbers, names, row texts) are plain ASCII: narrowed as they are checked, with
    // no UTF-8 conversion of their own; the rest goes on from the first character that is not.
    std::string Out(N, '\0');
    char* D = Out.data();
    std::size_t I = 0;
    for (; I < N; ++I) {
        const char16_t C = U[I];
        if (C >= 0x80 || !PlainAscii[C]) break;
        D[I] = static_cast<char>(C);
    }
    if (I == N) return Out;
    Out.resize(I);
    Out.reserve(N + N / 4 + 8);
    for (; I < N; ++I) {
        const char16_t C = U[I];
        switch (C) {
        case '&':
            Out += "&amp;";
            continue;
        case '<':
            Out += "&lt;";
            continue;
        case '>':
            Out += "&gt;";
            continue;
        case '"':
            if (Attribute)
                Out += "&quot;";
            else
                Out += '"';
            continue;
        case '\t':
        case '\n':
            if (Attribute)
                AppendCharRef(Out, C);
            else
                Out += static_cast<char>(C);
            continue;
        case '\r':
            // A literal one would become a line feed when read.
            AppendCharRef(Out, C);
            continue;
        default:
            break;
        }
        char32_t Code = C;
        // What XML 1.0 cannot carry (the other controls, U+0000 included, lone surrogates, U+FFFE,
        // U+FFFF) becomes U+FFFD; controls are no XML characters, not even as references.
        if (C < 0x20 || C == 0xFFFE || C == 0xFFFF || QChar::isLowSurrogate(C)) {
            Code = QChar::ReplacementCharacter;
        } else if (QChar::isHighSurrogate(C)) {
            if (I + 1 < N && QChar::isLowSurrogate(U[I + 1]))
                Code = QChar::surrogateToUcs4(C, U[++I]);
            else
                Code = QChar::ReplacementCharacter;
        }
        AppendUtf8(Out, Code);
    }
    return Out;
}

void DecodeInto(std::string& Out, std::string_view Raw, TDecode Mode) {
    for (std::size_t I = 0; I < Raw.size(); ++I) {
        const char C = Raw[I];
        if (C == '\r') {
            if (I + 1 < Raw.size() && Raw[I + 1] == '\n') ++I;
            Out += Mode == dAttribute ? ' ' : '\n';
        } else if (Mode == dAttribute && (C == '\n' || C == '\t')) {
            Out += ' ';
        } else if (C == '&' && Mode != dCData) {
            const std::size_t Len = DecodeReference(Raw.substr(I), Out);
            if (Len == 0)
                Out += C;
            else
                I += Len - 1;
        } else {
            Out += C;
        }
    }
}

QString Decode(std::string_view Raw, TDecode Mode) {
    if (!NeedsDecoding(Raw, Mode)) return FromUtf8(Raw);
    std::string Out;
    Out.reserve(Raw.size());
    DecodeInto(Out, Raw, Mode);
    return FromUtf8(Out);
}

bool AttrValueIs(const char* Raw, std::string_view Value) {
    const std::string_view R(Raw);
    if (!NeedsDecoding(R, dAttribute)) return R == Value;
    std::string Out;
    DecodeInto(Out, R, dAttribute);
    return Out == Value;
}

std::size_t FindBadCharRef(std::string_view Raw) {
    // An unfinished reference at the end of a text would become a reference once an edit joins it
    // to the next text, and the saved document would no longer load.
    if (Raw.ends_with('&')) return Raw.size() - 1;
    for (std::size_t I = Raw.find("&#"); I != std::string_view::npos; I = Raw.find("&#", I + 2)) {
        const std::size_t Semi = Raw.find(';', I + 2);
        if (Semi == std::string_view::npos) return I;
        const long long V = CharRefValue(Raw.substr(I + 1, Semi - I - 1));
        if (V != NoCharRef && !IsCharRefAllowed(V)) return I;
    }
    return std::string_view::npos;
}

// Offset of the first byte that is not well-formed UTF-8 or not an XML character, or npos.
std::size_t FindBadCharacter(std::string_view T, QString& Reason) {
    const auto* B = reinterpret_cast<const unsigned char*>(T.data());
    const std::size_t N = T.size();
    const std::size_t BadUtf8 = detail::Utf8ErrorOffset(QByteArrayView(T.data(), static_cast<qsizetype>(N)));
    const std::size_t End = BadUtf8 == detail::Utf8Valid ? N : BadUtf8;
    std::size_t I = 0;
    while (I < End) {
        // Eight bytes at a time that hold no control and no EF (the lead byte of U+FFFE/FFFF).
        if (I + 8 <= End) {
            quint64 W;
            std::memcpy(&W, B + I, 8);
            constexpr quint64 Ones = 0x0101010101010101ULL, Highs = 0x8080808080808080ULL;
            const quint64 Ef = W ^ (Ones * 0xEF);
            const quint64 AnyBelowBlank = (W - Ones * 0x20) & ~W & Highs;
            const quint64 AnyEf = (Ef - Ones) & ~Ef & Highs;
            if ((AnyBelowBlank | AnyEf) == 0) {
                I += 8;
                continue;
            }
        }
        const unsigned C = B[I];
        if (C < 0x20 && C != '\t' && C != '\n' && C != '\r') {
            Reason = detail::Tr("qxnum::TXmlDocument", "invalid character U+%1")
                         .arg(QString::number(C, 16).toUpper().rightJustified(4, QLatin1Char('0')));
            return I;
        }
        if (C == 0xEF && I + 2 < N && B[I + 1] == 0xBF && (B[I + 2] == 0xBE || B[I + 2] == 0xBF)) {
            Reason = detail::Tr("qxnum::TXmlDocument", "invalid character U+%1")
                         .arg(B[I + 2] == 0xBE ? u"FFFE" : u"FFFF");
            return I;
        }
        ++I;
    }
    if (BadUtf8 != detail::Utf8Valid)
        Reason = detail::Tr("qxnum::TXmlDocument", "invalid UTF-8 byte sequence");
    return BadUtf8 == detail::Utf8Valid ? std::string_view::npos : BadUtf8;
}

std::errc ParseInteger(std::string_view S, long long& Value, int Base, bool Signed) {
    bool Negative = false;
    if (Signed && !S.empty() && (S[0] == '+' || S[0] == '-')) {
        Negative = S[0] == '-';
        S.remove_prefix(1);
    }
    if (S.empty()) return std::errc::invalid_argument;
    // By hand: from_chars<long long> would leave a visible template instance in the library.
    const auto B = static_cast<unsigned long long>(Base);
    const unsigned long long Limit = Negative ? 0x8000000000000000ULL : 0x7FFFFFFFFFFFFFFFULL;
    unsigned long long V = 0;
    bool Over = false;
    for (const char C : S) {
        unsigned long long D = 0;
        if (C >= '0' && C <= '9')
            D = static_cast<unsigned long long>(C - '0');
        else if (Base == 16 && C >= 'a' && C <= 'f')
            D = static_cast<unsigned long long>(C - 'a' + 10);
        else if (Base == 16 && C >= 'A' && C <= 'F')
            D = static_cast<unsigned long long>(C - 'A' + 10);
        else
            return std::errc::invalid_argument;
        if (D >= B) return std::errc::invalid_argument;
        if (Over || V > (Limit - D) / B)
            Over = true;
        else
            V = V * B + D;
    }
    if (Over) return std::errc::result_out_of_range;
    Value = Negative ? static_cast<long long>(0 - V) : static_cast<long long>(V);
    return std::errc();
}

bool ParseFloat(std::string_view S, double& Value) {
    if (!S.empty() && S[0] == '+') {
        S.remove_prefix(1);
        if (!S.empty() && S[0] == '-') return false; // "+-1"
    }
    if (S.empty()) return false;
    double V = 0;
    const auto R = std::from_chars(S.data(), S.data() + S.size(), V, std::chars_format::general);
    if (R.ec != std::errc() || R.ptr != S.data() + S.size()) return false;
    Value = V;
    return true;
}

} // namespace xmlimpl

// --- Typed text ----------------------------------------------------------------------------------

QString XmlBoolToStr(bool Value) {
    return Value ? QStringLiteral("True") : QStringLiteral("False");
}

QString XmlIntToStr(int Value) {
    return QString::number(Value);
}

bool XmlTryStrToInt(const QString& Text, int& Value) {
    long long V = 0;
    if (xmlimpl::ParseInteger(xmlimpl::AsciiTrimmed(Text), V) != std::errc() || V < INT_MIN || V > INT_MAX)
        return false;
    Value = static_cast<int>(V);
    return true;
}

bool XmlTryStrToBool(const QString& Text, bool& Value) {
    const QString T = Text.trimmed();
    if (T.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        Value = true;
        return true;
    }
    if (T.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        Value = false;
        return true;
    }
    double V = 0;
    if (!xmlimpl::ParseFloat(xmlimpl::AsciiTrimmed(T), V) || std::isnan(V)) return false;
    Value = V != 0;
    return true;
}

QString XmlFloatToStr(double Value) {
    return xmlimpl::ShortestText(Value);
}

QString XmlExtendedToStr(Extended Value) {
    return xmlimpl::ShortestText(Value);
}

bool XmlTryStrToFloat(const QString& Text, double& Value) {
    return xmlimpl::ParseFloat(xmlimpl::AsciiTrimmed(Text), Value);
}

QString XmlDateTimeToStr(const QDateTime& Value) {
    if (!Value.isValid()) return {};
    const QDateTime L = Value.toLocalTime();
    return L.toString(L.time().msec() ? QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz")
                                      : QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
}

bool XmlTryStrToDateTime(const QString& Text, QDateTime& Value) {
    QString T = Text.trimmed();
    if (T.size() > 10 && T[10] == QLatin1Char(' ')) T[10] = QLatin1Char('T');
    QDateTime V;
    if (T.size() > 10) {
        V = QDateTime::fromString(T, Qt::ISODateWithMs);
    } else {
        const QDate Date = QDate::fromString(T, Qt::ISODate);
        if (Date.isValid()) V = Date.startOfDay();
    }
    if (!V.isValid()) return false;
    Value = V.toLocalTime();
    return true;
}
} // namespace qxnum
