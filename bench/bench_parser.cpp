// TQXParser against the work it wraps: TryQX_StrToFloat for plain numbers, and a bare muparser
// parse-and-evaluate of the same expression for real expressions.
#include <qxnum/numconv.h>
#include <qxnum/parser.h>

#include <benchmark/benchmark.h>
#include <muParser.h>

namespace {

using namespace qxnum;

const QString PlainText = QStringLiteral("12345.678");
const QString ExprText = QStringLiteral("2*p1+sin(0.5)/3-max(p1,4)^2");

void SetP1(TQXParser& P) {
    P.SetOnCheckVariable([](QObject*, const QString&, Extended& Value, bool& Found) {
        Value = 10;
        Found = true;
    });
}

void BM_ParserPlainNumber_Baseline(benchmark::State& State) {
    for (auto _ : State) {
        Extended V = 0;
        benchmark::DoNotOptimize(TryQX_StrToFloat(PlainText, V));
        benchmark::DoNotOptimize(V);
    }
}
BENCHMARK(BM_ParserPlainNumber_Baseline);

void BM_ParserPlainNumber(benchmark::State& State) {
    TQXParser P;
    P.SetExpression(PlainText);
    for (auto _ : State)
        benchmark::DoNotOptimize(P.CalcValue());
}
BENCHMARK(BM_ParserPlainNumber);

void BM_ParserExpression_Baseline(benchmark::State& State) {
    mu::Parser P;
    double P1 = 10;
    P.DefineVar("p1", &P1);
    const std::string Text = ExprText.toStdString();
    for (auto _ : State) {
        P.SetExpr(Text); // parsed afresh each time, as CalcValue does
        benchmark::DoNotOptimize(P.Eval());
    }
}
BENCHMARK(BM_ParserExpression_Baseline);

void BM_ParserExpression(benchmark::State& State) {
    TQXParser P;
    SetP1(P);
    P.SetExpression(ExprText);
    for (auto _ : State)
        benchmark::DoNotOptimize(P.CalcValue());
}
BENCHMARK(BM_ParserExpression);

// The grid and the edit make a parser per evaluation.
void BM_ParserExpressionNewParser(benchmark::State& State) {
    for (auto _ : State) {
        TQXParser P;
        SetP1(P);
        P.SetExpression(ExprText);
        benchmark::DoNotOptimize(P.CalcValue());
    }
}
BENCHMARK(BM_ParserExpressionNewParser);

} // namespace
