// Filer throughput beside QDataStream doing the same work on the same values. The baseline writes
// an extended float as its 10 bytes in two stream operations (a quint64 significand and a quint16
// sign/exponent, copied from the long double's storage), integers as qint32, booleans as bool and
// strings as QString, in little-endian order; it writes no tags.
#include <qxnum/filer.h>

#include <QBuffer>
#include <QDataStream>
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace qxnum;

constexpr int ValueCount = 1000000;

struct TMixedValues {
    std::vector<quint8> Kinds; // 0 integer, 1 extended, 2 boolean, 3 string
    std::vector<int> Ints;
    std::vector<Extended> Floats;
    std::vector<bool> Bools;
    std::vector<QString> Strings;
};

const TMixedValues& Values() {
    static const TMixedValues V = [] {
        TMixedValues M;
        std::mt19937 Rng(42);
        const char* Words[] = {"TNumFld", "Value", "Pressure", "T1", "Enabled", "usSI", "kg/s", "Row00"};
        for (int I = 0; I < ValueCount; ++I) {
            const auto K = static_cast<quint8>(Rng() % 4);
            M.Kinds.push_back(K);
            switch (K) {
            case 0:
                M.Ints.push_back(static_cast<int>(Rng()) >> (Rng() % 31));
                break;
            case 1:
                M.Floats.push_back(static_cast<Extended>(Rng()) / 977.0L - 2000000.0L);
                break;
            case 2:
                M.Bools.push_back(Rng() & 1);
                break;
            default:
                M.Strings.push_back(QString::fromLatin1(Words[Rng() % 8]) + QString::number(Rng() % 100));
                break;
            }
        }
        return M;
    }();
    return V;
}

void WriteFiler(TWriter& W) {
    const TMixedValues& V = Values();
    std::size_t Ii = 0, Fi = 0, Bi = 0, Si = 0;
    for (quint8 K : V.Kinds) {
        switch (K) {
        case 0:
            W.WriteInteger(V.Ints[Ii++]);
            break;
        case 1:
            W.WriteFloat(V.Floats[Fi++]);
            break;
        case 2:
            W.WriteBoolean(V.Bools[Bi++]);
            break;
        default:
            W.WriteString(V.Strings[Si++]);
            break;
        }
    }
}

void WriteBaseline(QDataStream& S) {
    const TMixedValues& V = Values();
    std::size_t Ii = 0, Fi = 0, Bi = 0, Si = 0;
    for (quint8 K : V.Kinds) {
        switch (K) {
        case 0:
            S << qint32(V.Ints[Ii++]);
            break;
        case 1: {
            quint64 Mant;
            quint16 SignExp;
            std::memcpy(&Mant, &V.Floats[Fi], 8);
            std::memcpy(&SignExp, reinterpret_cast<const char*>(&V.Floats[Fi]) + 8, 2);
            ++Fi;
            S << Mant << SignExp;
            break;
        }
        case 2:
            S << V.Bools[Bi++]; // const vector<bool>: already a bool
            break;
        default:
            S << V.Strings[Si++];
            break;
        }
    }
}

void SetCounters(benchmark::State& State, qint64 Bytes) {
    State.SetItemsProcessed(State.iterations() * ValueCount);
    State.SetBytesProcessed(State.iterations() * Bytes);
}

void BM_FilerWrite(benchmark::State& State) {
    qint64 Bytes = 0;
    for (auto _ : State) {
        QByteArray Out;
        Out.reserve(12 * ValueCount);
        QBuffer Buf(&Out);
        Buf.open(QIODevice::WriteOnly);
        {
            TWriter W(&Buf);
            WriteFiler(W);
        }
        Bytes = Out.size();
        benchmark::DoNotOptimize(Out.data());
    }
    SetCounters(State, Bytes);
}
BENCHMARK(BM_FilerWrite)->Unit(benchmark::kMillisecond);

void BM_FilerWrite_Baseline(benchmark::State& State) {
    qint64 Bytes = 0;
    for (auto _ : State) {
        QByteArray Out;
        Out.reserve(12 * ValueCount);
        QBuffer Buf(&Out);
        Buf.open(QIODevice::WriteOnly);
        QDataStream S(&Buf);
        S.setByteOrder(QDataStream::LittleEndian);
        WriteBaseline(S);
        Bytes = Out.size();
        benchmark::DoNotOptimize(Out.data());
    }
    SetCounters(State, Bytes);
}
BENCHMARK(BM_FilerWrite_Baseline)->Unit(benchmark::kMillisecond);

void BM_FilerRead(benchmark::State& State) {
    const TMixedValues& V = Values();
    QByteArray In;
    {
        QBuffer Buf(&In);
        Buf.open(QIODevice::WriteOnly);
        TWriter W(&Buf);
        WriteFiler(W);
    }
    for (auto _ : State) {
        QBuffer Buf(&In);
        Buf.open(QIODevice::ReadOnly);
        TReader R(&Buf);
        qint64 IntSum = 0;
        Extended FloatSum = 0;
        qsizetype Chars = 0;
        for (quint8 K : V.Kinds) {
            switch (K) {
            case 0:
                IntSum += R.ReadInteger();
                break;
            case 1:
                FloatSum += R.ReadFloat();
                break;
            case 2:
                IntSum += R.ReadBoolean();
                break;
            default:
                Chars += R.ReadString().size();
                break;
            }
        }
        benchmark::DoNotOptimize(IntSum);
        benchmark::DoNotOptimize(FloatSum);
        benchmark::DoNotOptimize(Chars);
    }
    SetCounters(State, In.size());
}
BENCHMARK(BM_FilerRead)->Unit(benchmark::kMillisecond);

void BM_FilerRead_Baseline(benchmark::State& State) {
    const TMixedValues& V = Values();
    QByteArray In;
    {
        QBuffer Buf(&In);
        Buf.open(QIODevice::WriteOnly);
        QDataStream S(&Buf);
        S.setByteOrder(QDataStream::LittleEndian);
        WriteBaseline(S);
    }
    for (auto _ : State) {
        QBuffer Buf(&In);
        Buf.open(QIODevice::ReadOnly);
        QDataStream S(&Buf);
        S.setByteOrder(QDataStream::LittleEndian);
        qint64 IntSum = 0;
        Extended FloatSum = 0;
        qsizetype Chars = 0;
        for (quint8 K : V.Kinds) {
            switch (K) {
            case 0: {
                qint32 I;
                S >> I;
                IntSum += I;
                break;
            }
            case 1: {
                quint64 Mant;
                quint16 SignExp;
                S >> Mant >> SignExp;
                Extended F = 0;
                std::memcpy(&F, &Mant, 8);
                std::memcpy(reinterpret_cast<char*>(&F) + 8, &SignExp, 2);
                FloatSum += F;
                break;
            }
            case 2: {
                bool B;
                S >> B;
                IntSum += B;
                break;
            }
            default: {
                QString Str;
                S >> Str;
                Chars += Str.size();
                break;
            }
            }
        }
        benchmark::DoNotOptimize(IntSum);
        benchmark::DoNotOptimize(FloatSum);
        benchmark::DoNotOptimize(Chars);
    }
    SetCounters(State, In.size());
}
BENCHMARK(BM_FilerRead_Baseline)->Unit(benchmark::kMillisecond);

} // namespace
