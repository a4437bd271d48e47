// Number text: display formatting and parsing, each beside the standard library doing the nearest
// equivalent job on the same numbers (baseline) and a cheaper job that bounds what is possible (limit).
#include <qxnum/numconv.h>
#include <qxnum/numtext.h>
#include <qxnum/units.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace qxnum;

namespace {

constexpr std::size_t ValueCount = 1000;

// Pressures in Pa as a plant shows them: 1 mbar to 1000 bar, log-uniform, plus the usual round values.
const std::vector<Extended>& Pressures() {
    static const std::vector<Extended> Values = [] {
        std::mt19937_64 Rng(1);
        std::uniform_real_distribution<double> Decade(2.0, 8.0);
        std::vector<Extended> V;
        for (std::size_t I = 0; I < ValueCount; ++I) {
            if (I % 10 == 0)
                V.push_back(101325.0L * static_cast<Extended>(I % 7 + 1)); // atmospheres
            else if (I % 10 == 5)
                V.push_back(static_cast<Extended>(I * 2500)); // set points on a round grid
            else
                V.push_back(static_cast<Extended>(std::pow(10.0, Decade(Rng))));
        }
        return V;
    }();
    return Values;
}

// Mixed magnitudes and signs for the exponent picture.
const std::vector<Extended>& MixedValues() {
    static const std::vector<Extended> Values = [] {
        std::mt19937_64 Rng(2);
        std::uniform_real_distribution<double> Decade(-12.0, 12.0);
        std::vector<Extended> V;
        for (std::size_t I = 0; I < ValueCount; ++I) {
            const Extended X = static_cast<Extended>(std::pow(10.0, Decade(Rng)));
            V.push_back(Rng() & 1 ? -X : X);
        }
        return V;
    }();
    return Values;
}

// Display texts as users type or paste them.
const std::vector<std::string>& Texts() {
    static const std::vector<std::string> Values = [] {
        const char* Fixed[] = {"2.500",  "-14.5037", "1.2346E+04", "0.000123", "101325", "1.01325",
                               "250",    "0.5",      "-0.75",      "3.14159",  "1e5",    "12.0",
                               "99.999", "7",        "6.02E-3",    "1013.25"};
        std::vector<std::string> V(std::begin(Fixed), std::end(Fixed));
        std::mt19937_64 Rng(3);
        while (V.size() < ValueCount) {
            char Buf[32];
            const double X = std::pow(10.0, std::uniform_real_distribution<double>(-3.0, 5.0)(Rng));
            const auto R = std::to_chars(Buf, Buf + sizeof Buf, X, std::chars_format::fixed,
                                         1 + static_cast<int>(Rng() % 5));
            V.emplace_back(Buf, R.ptr);
        }
        return V;
    }();
    return Values;
}

constexpr Extended PressScale = 100000.0L; // Pa per bar: ptPress in SI shows bar

void BM_ValueString(benchmark::State& State) {
    const std::vector<Extended>& V = Pressures();
    const QString Picture = QStringLiteral("0.000##");
    std::size_t I = 0;
    for (auto _ : State) {
        QString S = ValueString(V[I], dtDouble, ntParType, 18, 3, ptPress, usSI, Picture, 1, 0, true, false,
                                NumInpFormatSettings);
        benchmark::DoNotOptimize(S);
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_ValueString);

void BM_ValueString_Baseline(benchmark::State& State) {
    const std::vector<Extended>& V = Pressures();
    char Buf[64];
    std::size_t I = 0;
    for (auto _ : State) {
        const Extended X = V[I] / PressScale;
        const auto R = std::to_chars(Buf, Buf + sizeof Buf, X, std::chars_format::scientific, 17);
        benchmark::DoNotOptimize(R.ptr);
        benchmark::ClobberMemory();
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_ValueString_Baseline);

void BM_ValueString_Limit(benchmark::State& State) {
    const std::vector<Extended>& V = Pressures();
    char Buf[64];
    std::size_t I = 0;
    for (auto _ : State) {
        const double X = static_cast<double>(V[I] / PressScale);
        const auto R = std::to_chars(Buf, Buf + sizeof Buf, X, std::chars_format::fixed, 3);
        benchmark::DoNotOptimize(R.ptr);
        benchmark::ClobberMemory();
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_ValueString_Limit);

void BM_FormatFloatExp(benchmark::State& State) {
    const std::vector<Extended>& V = MixedValues();
    const QString Picture = QStringLiteral("0.0000E+00");
    std::size_t I = 0;
    for (auto _ : State) {
        QString S = FormatFloat(Picture, V[I]);
        benchmark::DoNotOptimize(S);
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_FormatFloatExp);

void BM_FormatFloatExp_Baseline(benchmark::State& State) {
    const std::vector<Extended>& V = MixedValues();
    char Buf[64];
    std::size_t I = 0;
    for (auto _ : State) {
        const auto R = std::to_chars(Buf, Buf + sizeof Buf, V[I], std::chars_format::scientific, 17);
        benchmark::DoNotOptimize(R.ptr);
        benchmark::ClobberMemory();
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_FormatFloatExp_Baseline);

void BM_FormatFloatExp_Limit(benchmark::State& State) {
    const std::vector<Extended>& V = MixedValues();
    char Buf[64];
    std::size_t I = 0;
    for (auto _ : State) {
        const auto R =
            std::to_chars(Buf, Buf + sizeof Buf, static_cast<double>(V[I]), std::chars_format::scientific, 4);
        benchmark::DoNotOptimize(R.ptr);
        benchmark::ClobberMemory();
        if (++I == V.size()) I = 0;
    }
}
BENCHMARK(BM_FormatFloatExp_Limit);

void BM_StrToPar(benchmark::State& State) {
    std::vector<QString> T;
    for (const std::string& S : Texts())
        T.push_back(QString::fromStdString(S));
    std::size_t I = 0;
    for (auto _ : State) {
        benchmark::DoNotOptimize(StrToPar(T[I], ntParType, ptPress, usSI));
        if (++I == T.size()) I = 0;
    }
}
BENCHMARK(BM_StrToPar);

void BM_StrToPar_Baseline(benchmark::State& State) {
    const std::vector<std::string>& T = Texts();
    std::size_t I = 0;
    for (auto _ : State) {
        double V = 0;
        const std::string& S = T[I];
        std::from_chars(S.data(), S.data() + S.size(), V);
        benchmark::DoNotOptimize(V);
        if (++I == T.size()) I = 0;
    }
}
BENCHMARK(BM_StrToPar_Baseline);

} // namespace
