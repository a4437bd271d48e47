// TQXParser: our own scanner checks the text (characters, numbers, names, parentheses, argument
// counts) and reports errors at character positions; muparser then evaluates a rewritten text in
// which every number and every identifier is a muparser variable. So muparser never sees locale
// separators, non-ASCII names or its own extras (comparisons, "?:", assignments, string constants).
#include "qxnum/parser.h"

#include "qxnum/formatsettings.h"
#include "qxnum/numconv.h"
#include "tr_p.h"

#include <muParser.h>

#include <cfenv>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace qxnum {

namespace {

// Far beyond any typed expression; keeps muparser well inside its own 10000-character limit.
constexpr qsizetype MaxExpressionLength = 1000;
constexpr int MaxNesting = 100;
// Longer token texts are shortened in messages.
constexpr qsizetype MaxQuotedLength = 40;

struct TFuncDef {
    const char* Name;
    int MinArgs;
    int MaxArgs; // -1: no upper limit
};

// Names are those of muparser's own functions, so the rewritten text can use them as they are.
constexpr TFuncDef Funcs[] = {
    {"sin", 1, 1},  {"cos", 1, 1},  {"tan", 1, 1},  {"asin", 1, 1},  {"acos", 1, 1},
    {"atan", 1, 1}, {"exp", 1, 1},  {"ln", 1, 1},   {"log10", 1, 1}, {"sqrt", 1, 1},
    {"abs", 1, 1},  {"min", 2, -1}, {"max", 2, -1},
};

enum TTokenKind : quint8 { tkNumber, tkConst, tkIdent, tkFunc, tkOperator, tkOpen, tkClose, tkSeparator };

struct TToken {
    TTokenKind Kind;
    qsizetype Pos; // 0-based in the expression
    qsizetype Len;
    char Op = 0;   // tkOperator
    int Func = -1; // tkFunc: index into Funcs
    int Slot = -1; // tkNumber, tkConst, tkIdent: index of the muparser variable
    std::size_t RenderPos = 0;
};

// An open parenthesis while scanning.
struct TFrame {
    qsizetype Pos;
    int Func; // -1 for a plain parenthesis
    int Args;
    qsizetype FuncPos; // the function name, for messages
    qsizetype FuncLen;
};

bool IsAsciiDigit(QChar C) {
    return C >= QLatin1Char('0') && C <= QLatin1Char('9');
}

bool IsNameStart(QChar C) {
    return C.isLetter() || C == QLatin1Char('_');
}

bool IsNameChar(QChar C) {
    return C.isLetterOrNumber() || C == QLatin1Char('_');
}

// ASCII-only case folding: "SIN" is sin, but no Unicode folding turns other letters into "s".
bool EqualsAsciiNoCase(QStringView S, const char* Name) {
    qsizetype I = 0;
    for (; Name[I] != 0; ++I) {
        if (I >= S.size()) return false;
        const char16_t C = S[I].unicode();
        if (C >= 128) return false;
        const char L = (C >= 'A' && C <= 'Z') ? static_cast<char>(C - 'A' + 'a') : static_cast<char>(C);
        if (L != Name[I]) return false;
    }
    return I == S.size();
}

int FindFunc(QStringView Name) {
    for (int I = 0; I < static_cast<int>(std::size(Funcs)); ++I)
        if (EqualsAsciiNoCase(Name, Funcs[I].Name)) return I;
    return -1;
}

QString Quoted(QStringView Text) {
    QString R(1, QLatin1Char('\''));
    if (Text.size() > MaxQuotedLength) {
        R += Text.left(MaxQuotedLength);
        R += QStringLiteral("...");
    } else {
        R += Text;
    }
    R += QLatin1Char('\'');
    return R;
}

// "<description>: <reason> at position <n>", n 1-based; no position part for Pos < 0.
[[noreturn]] void Fail(const QString& Description, const QString& Reason, qsizetype Pos = -1) {
    QString Msg = Description.isEmpty() ? Reason : Description + QStringLiteral(": ") + Reason;
    if (Pos >= 0) Msg += detail::Tr("qxnum::TQXParser", " at position %1").arg(Pos + 1);
    throw EQXParserError(Msg);
}

// A character for a message: printable ones quoted, others as a code point.
QString CharText(QStringView S, qsizetype Pos) {
    char32_t Code = S[Pos].unicode();
    if (S[Pos].isHighSurrogate() && Pos + 1 < S.size() && S[Pos + 1].isLowSurrogate())
        Code = QChar::surrogateToUcs4(S[Pos], S[Pos + 1]);
    else if (S[Pos].isPrint())
        return Quoted(S.mid(Pos, 1));
    return QStringLiteral("U+%1").arg(static_cast<uint>(Code), 4, 16, QLatin1Char('0')).toUpper();
}

// Restores the caller's floating-point exception flags, so that only our evaluation is judged.
class TFpFlagsScope {
public:
    TFpFlagsScope() {
        std::fegetexceptflag(&FSaved, FE_ALL_EXCEPT);
        std::feclearexcept(FE_ALL_EXCEPT);
    }
    ~TFpFlagsScope() { std::fesetexceptflag(&FSaved, FE_ALL_EXCEPT); }
    TFpFlagsScope(const TFpFlagsScope&) = delete;
    TFpFlagsScope& operator=(const TFpFlagsScope&) = delete;

private:
    std::fexcept_t FSaved{};
};

// Removes the variables from the engine however evaluation ends: they point into local storage.
class TEngineVarsScope {
public:
    explicit TEngineVarsScope(mu::Parser& Engine) : FEngine(Engine) {}
    ~TEngineVarsScope() { FEngine.ClearVar(); }
    TEngineVarsScope(const TEngineVarsScope&) = delete;
    TEngineVarsScope& operator=(const TEngineVarsScope&) = delete;

private:
    mu::Parser& FEngine;
};

} // namespace

struct TQXParser::TImpl {
    QObject* Owner = nullptr;
    QString Description;
    QString Expression;
    TOnCheckVariableEvent OnCheckVariable;
    std::unique_ptr<mu::Parser> Engine; // made on the first real expression

    Extended Calc();
};

namespace {

// One pass over the text: tokens are checked against the grammar as they are read, so the first
// error in reading order is the one reported.
class TScanner {
public:
    TScanner(const QString& Description, QStringView Text) : FDescription(Description), S(Text) {
        const QChar Sep = NumInpFormatSettings.DecimalSeparator;
        const bool Usable =
            !Sep.isLetterOrNumber() && !Sep.isSpace() && !QStringView(u"+-*/^();_").contains(Sep);
        DecSep = Usable ? Sep : QChar(QLatin1Char('.'));
    }

    std::vector<TToken> Tokens;
    std::vector<double> Numbers;     // values of tkNumber / tkConst slots, in order
    std::vector<QStringView> Idents; // distinct identifiers, in order of first appearance
    std::vector<qsizetype> IdentPos; // position of each identifier's first appearance

    void Run();

private:
    const QString& FDescription;
    QStringView S;
    QChar DecSep;
    bool ExpectOperand = true;
    bool AfterSign = false;
    std::vector<TFrame> Frames;

    bool IsPoint(QChar C) const { return C == DecSep || C == QLatin1Char('.'); }
    bool IsSeparator(QChar C) const {
        return C == QLatin1Char(';') || (C == QLatin1Char(',') && DecSep != QLatin1Char(','));
    }
    qsizetype SkipBlanks(qsizetype I) const {
        while (I < S.size() && S[I].isSpace())
            ++I;
        return I;
    }
    QString TokenText(const TToken& T) const { return Quoted(S.mid(T.Pos, T.Len)); }
    [[noreturn]] void Error(const QString& Reason, qsizetype Pos) const { Fail(FDescription, Reason, Pos); }

    qsizetype ReadNumber(qsizetype I);
    qsizetype ReadName(qsizetype I);
    void Accept(TToken T);
    void Finish();
};

qsizetype TScanner::ReadNumber(qsizetype I) {
    const qsizetype Start = I;
    std::string Ascii;
    while (I < S.size() && IsAsciiDigit(S[I]))
        Ascii += static_cast<char>(S[I++].unicode());
    if (I < S.size() && IsPoint(S[I])) {
        Ascii += '.';
        ++I;
        while (I < S.size() && IsAsciiDigit(S[I]))
            Ascii += static_cast<char>(S[I++].unicode());
    }
    bool Bad = false;
    if (I < S.size() && (S[I] == QLatin1Char('e') || S[I] == QLatin1Char('E'))) {
        qsizetype J = I + 1;
        std::string Exp = "e";
        if (J < S.size() && (S[J] == QLatin1Char('+') || S[J] == QLatin1Char('-')))
            Exp += static_cast<char>(S[J++].unicode());
        if (J < S.size() && IsAsciiDigit(S[J])) {
            while (J < S.size() && IsAsciiDigit(S[J]))
                Exp += static_cast<char>(S[J++].unicode());
            Ascii += Exp;
            I = J;
        } else {
            Bad = true;
        }
    }
    // "2x", "1.2.3", "1e": one bad number rather than a confusing follow-up error.
    if (Bad || (I < S.size() && (IsNameChar(S[I]) || IsPoint(S[I])))) {
        while (I < S.size() && (IsNameChar(S[I]) || IsPoint(S[I]) ||
                                ((S[I] == QLatin1Char('+') || S[I] == QLatin1Char('-')) &&
                                 (S[I - 1] == QLatin1Char('e') || S[I - 1] == QLatin1Char('E')))))
            ++I;
        Error(detail::Tr("qxnum::TQXParser", "invalid number %1").arg(Quoted(S.mid(Start, I - Start))),
              Start);
    }
    double Value = 0;
    const auto [End, Ec] = std::from_chars(Ascii.data(), Ascii.data() + Ascii.size(), Value);
    if (Ec == std::errc::result_out_of_range)
        Error(detail::Tr("qxnum::TQXParser", "number %1 out of range").arg(Quoted(S.mid(Start, I - Start))),
              Start);
    if (Ec != std::errc() || End != Ascii.data() + Ascii.size())
        Error(detail::Tr("qxnum::TQXParser", "invalid number %1").arg(Quoted(S.mid(Start, I - Start))),
              Start);
    TToken T{tkNumber, Start, I - Start};
    T.Slot = static_cast<int>(Numbers.size());
    Numbers.push_back(Value);
    Accept(T);
    return I;
}

qsizetype TScanner::ReadName(qsizetype I) {
    const qsizetype Start = I;
    while (I < S.size() && IsNameChar(S[I]))
        ++I;
    const QStringView Name = S.mid(Start, I - Start);
    const qsizetype Next = SkipBlanks(I);
    const bool Call = Next < S.size() && S[Next] == QLatin1Char('(');
    TToken T{tkIdent, Start, I - Start};
    if (Call) {
        T.Kind = tkFunc;
        T.Func = FindFunc(Name);
        if (T.Func < 0) Error(detail::Tr("qxnum::TQXParser", "unknown function %1").arg(Quoted(Name)), Start);
    } else if (EqualsAsciiNoCase(Name, "pi")) {
        // muparser's own _pi is not the double nearest to pi.
        T.Kind = tkConst;
        T.Slot = static_cast<int>(Numbers.size());
        Numbers.push_back(std::numbers::pi);
    } else {
        // Identifiers are kept exactly as typed; the host decides about case.
        int Index = -1;
        for (std::size_t K = 0; K < Idents.size(); ++K)
            if (Idents[K] == Name) {
                Index = static_cast<int>(K);
                break;
            }
        if (Index < 0) {
            Index = static_cast<int>(Idents.size());
            Idents.push_back(Name);
            IdentPos.push_back(Start);
        }
        T.Slot = Index;
    }
    Accept(T);
    return I;
}

void TScanner::Accept(TToken T) {
    if (ExpectOperand) {
        switch (T.Kind) {
        case tkNumber:
        case tkConst:
        case tkIdent:
            ExpectOperand = false;
            break;
        case tkFunc:
        case tkOpen:
            // A function token is always followed by its "(", which opens the frame.
            if (T.Kind == tkOpen) {
                if (static_cast<int>(Frames.size()) >= MaxNesting)
                    Error(detail::Tr("qxnum::TQXParser", "parentheses nested deeper than %1 levels")
                              .arg(MaxNesting),
                          T.Pos);
                const bool Call = !Tokens.empty() && Tokens.back().Kind == tkFunc;
                if (Call)
                    Frames.push_back({T.Pos, Tokens.back().Func, 1, Tokens.back().Pos, Tokens.back().Len});
                else
                    Frames.push_back({T.Pos, -1, 1, T.Pos, 1});
            }
            break;
        case tkOperator:
            // One sign only: muparser rejects "--2", and so do we, with a position.
            if ((T.Op == '+' || T.Op == '-') && !AfterSign) {
                AfterSign = true;
                Tokens.push_back(T);
                return;
            }
            Error(detail::Tr("qxnum::TQXParser", "unexpected %1").arg(TokenText(T)), T.Pos);
        case tkClose:
        case tkSeparator:
            Error(detail::Tr("qxnum::TQXParser", "unexpected %1").arg(TokenText(T)), T.Pos);
        }
    } else {
        switch (T.Kind) {
        case tkOperator:
            ExpectOperand = true;
            break;
        case tkClose: {
            if (Frames.empty()) Error(detail::Tr("qxnum::TQXParser", "unmatched ')'"), T.Pos);
            const TFrame F = Frames.back();
            Frames.pop_back();
            if (F.Func >= 0) {
                const TFuncDef& D = Funcs[F.Func];
                const QString Name = Quoted(S.mid(F.FuncPos, F.FuncLen));
                if (F.Args < D.MinArgs)
                    Error(detail::Tr("qxnum::TQXParser", "too few arguments for %1").arg(Name), F.FuncPos);
                if (D.MaxArgs >= 0 && F.Args > D.MaxArgs)
                    Error(detail::Tr("qxnum::TQXParser", "too many arguments for %1").arg(Name), F.FuncPos);
            }
            break;
        }
        case tkSeparator:
            if (Frames.empty() || Frames.back().Func < 0)
                Error(detail::Tr("qxnum::TQXParser", "unexpected %1").arg(TokenText(T)), T.Pos);
            ++Frames.back().Args;
            ExpectOperand = true;
            break;
        default:
            Error(detail::Tr("qxnum::TQXParser", "missing operator before %1").arg(TokenText(T)), T.Pos);
        }
    }
    AfterSign = false;
    Tokens.push_back(T);
}

void TScanner::Finish() {
    if (Tokens.empty()) Fail(FDescription, detail::Tr("qxnum::TQXParser", "empty expression"));
    if (ExpectOperand)
        Error(detail::Tr("qxnum::TQXParser", "unexpected end of expression"),
              Tokens.back().Pos + Tokens.back().Len);
    if (!Frames.empty()) Error(detail::Tr("qxnum::TQXParser", "missing ')' for '('"), Frames.back().Pos);
}

void TScanner::Run() {
    qsizetype I = 0;
    while (true) {
        I = SkipBlanks(I);
        if (I >= S.size()) break;
        const QChar C = S[I];
        if (IsAsciiDigit(C) || (IsPoint(C) && I + 1 < S.size() && IsAsciiDigit(S[I + 1]))) {
            I = ReadNumber(I);
        } else if (IsNameStart(C)) {
            I = ReadName(I);
        } else if (QStringView(u"+-*/^").contains(C)) {
            TToken T{tkOperator, I, 1};
            T.Op = static_cast<char>(C.unicode());
            Accept(T);
            ++I;
        } else if (C == QLatin1Char('(') || C == QLatin1Char(')')) {
            Accept(TToken{C == QLatin1Char('(') ? tkOpen : tkClose, I, 1});
            ++I;
        } else if (IsSeparator(C)) {
            Accept(TToken{tkSeparator, I, 1});
            ++I;
        } else {
            Error(detail::Tr("qxnum::TQXParser", "invalid character %1").arg(CharText(S, I)), I);
        }
    }
    Finish();
}

// The exact extended value of a lone number with an optional sign, as the numeric edit would
// parse it; false when the text is more than that.
bool LoneNumber(const TScanner& Sc, QStringView S, Extended& Value) {
    const auto& T = Sc.Tokens;
    const bool Signed = T.size() == 2 && T[0].Kind == tkOperator && T[1].Kind == tkNumber;
    if (!(T.size() == 1 && T[0].Kind == tkNumber) && !Signed) return false;
    const TToken& N = T.back();
    QString Text = S.mid(N.Pos, N.Len).toString();
    if (Signed) Text.prepend(QLatin1Char(T[0].Op));
    TFormatSettings Settings = NumInpFormatSettings;
    if (Text.contains(QLatin1Char('.'))) Settings.DecimalSeparator = QLatin1Char('.');
    Extended E = 0;
    if (!TryQX_StrToFloat(Text, E, Settings) || !std::isfinite(E)) return false;
    Value = E;
    return true;
}

} // namespace

Extended TQXParser::TImpl::Calc() {
    const QString Trimmed = Expression.trimmed();
    Extended Exact = 0;
    if (!Trimmed.isEmpty() && TryQX_StrToFloat(Trimmed, Exact) && std::isfinite(Exact)) return Exact;
    if (Trimmed.size() > MaxExpressionLength)
        Fail(Description,
             detail::Tr("qxnum::TQXParser", "expression longer than %1 characters").arg(MaxExpressionLength));

    const QStringView S(Expression);
    TScanner Sc(Description, S);
    Sc.Run();
    if (LoneNumber(Sc, S, Exact)) return Exact;

    // Storage is sized once before muparser gets pointers into it.
    const std::size_t NumberCount = Sc.Numbers.size();
    std::vector<double> Slots(NumberCount + Sc.Idents.size());
    std::copy(Sc.Numbers.begin(), Sc.Numbers.end(), Slots.begin());
    for (std::size_t K = 0; K < Sc.Idents.size(); ++K) {
        const QString Name = Sc.Idents[K].toString();
        Extended V = 0;
        bool Found = false;
        if (OnCheckVariable) OnCheckVariable(Owner, Name, V, Found);
        if (!Found)
            Fail(Description, detail::Tr("qxnum::TQXParser", "unknown identifier %1").arg(Quoted(Name)),
                 Sc.IdentPos[K]);
        const double D = static_cast<double>(V);
        if (!std::isfinite(D))
            Fail(Description,
                 detail::Tr("qxnum::TQXParser", "identifier %1 has no finite value").arg(Quoted(Name)),
                 Sc.IdentPos[K]);
        Slots[NumberCount + K] = D;
    }

    std::string Text;
    std::vector<std::string> Names;
    Names.reserve(Slots.size());
    for (std::size_t K = 0; K < NumberCount; ++K)
        Names.push_back("_n" + std::to_string(K));
    for (std::size_t K = 0; K < Sc.Idents.size(); ++K)
        Names.push_back("_v" + std::to_string(K));
    for (TToken& T : Sc.Tokens) {
        T.RenderPos = Text.size();
        switch (T.Kind) {
        case tkNumber:
        case tkConst:
            Text += Names[static_cast<std::size_t>(T.Slot)];
            break;
        case tkIdent:
            Text += Names[NumberCount + static_cast<std::size_t>(T.Slot)];
            break;
        case tkFunc:
            Text += Funcs[T.Func].Name;
            break;
        case tkOperator:
            Text += T.Op;
            break;
        case tkOpen:
            Text += '(';
            break;
        case tkClose:
            Text += ')';
            break;
        case tkSeparator:
            Text += ',';
            break;
        }
    }

    if (!Engine) Engine = std::make_unique<mu::Parser>();
    double Result = 0;
    int Raised = 0;
    try {
        TEngineVarsScope VarsScope(*Engine);
        for (std::size_t K = 0; K < Slots.size(); ++K)
            Engine->DefineVar(Names[K], &Slots[K]);
        Engine->SetExpr(Text);
        TFpFlagsScope Flags;
        Result = Engine->Eval();
        Raised = std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
    } catch (const mu::ParserError& E) {
        // Our scanner admits only what muparser accepts; this is a safety net, not a path.
        qsizetype Pos = S.size();
        const int At = E.GetPos();
        for (const TToken& T : Sc.Tokens)
            if (At >= 0 && T.RenderPos <= static_cast<std::size_t>(At)) Pos = T.Pos;
        Fail(
            Description,
            detail::Tr("qxnum::TQXParser", "invalid expression (%1)").arg(QString::fromStdString(E.GetMsg())),
            Pos);
    }
    // Flags also catch intermediate faults that a finite end result would hide, as in 1/(1/0).
    if (Raised & FE_DIVBYZERO) Fail(Description, detail::Tr("qxnum::TQXParser", "division by zero"));
    if (Raised & FE_INVALID) Fail(Description, detail::Tr("qxnum::TQXParser", "undefined result"));
    if ((Raised & FE_OVERFLOW) || !std::isfinite(Result))
        Fail(Description, detail::Tr("qxnum::TQXParser", "result out of range"));
    return Result;
}

TQXParser::TQXParser(QObject* Owner) : FImpl(std::make_unique<TImpl>()) {
    FImpl->Owner = Owner;
}

TQXParser::~TQXParser() = default;

QObject* TQXParser::Owner() const {
    return FImpl->Owner;
}

QString TQXParser::Description() const {
    return FImpl->Description;
}

void TQXParser::SetDescription(const QString& Description) {
    FImpl->Description = Description;
}

QString TQXParser::Expression() const {
    return FImpl->Expression;
}

void TQXParser::SetExpression(const QString& Expression) {
    FImpl->Expression = Expression;
}

TOnCheckVariableEvent TQXParser::OnCheckVariable() const {
    return FImpl->OnCheckVariable;
}

void TQXParser::SetOnCheckVariable(TOnCheckVariableEvent Event) {
    FImpl->OnCheckVariable = std::move(Event);
}

Extended TQXParser::CalcValue() {
    return FImpl->Calc();
}

} // namespace qxnum
