#include <Core/VoBase64.h>
#include <Core/VoCaseSensitiveString.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <benchmark/benchmark.h>

#include <locale>
#include <string>

#if defined(_WIN32)
#include <string.h>
#define strcasecmp _stricmp
#else
#include <strings.h>
#endif

/// @file
/// VoString beside its peers: QString, which folds all of Unicode, and the C library's strcasecmp, which folds bytes by
/// the C locale. Names end with what is measured; the argument is the length in bytes.

namespace {

std::string Sentence(std::size_t length)
{
    static const std::string words = "The quick brown fox jumps over the lazy dog and runs on; ";
    std::string text;
    while (text.size() < length)
        text += words;
    text.resize(length);
    return text;
}

std::string Swapped(std::string text)
{
    for (char& c : text)
        c = VoString::IsLetter(c) ? static_cast<char>(c ^ 0x20) : c;
    return text;
}

std::string Row(std::size_t length)
{
    std::string text;
    while (text.size() < length)
        text += "field,";
    return text;
}

std::size_t Length(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

void CountBytes(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void EqualOtherCaseVoString(benchmark::State& state)
{
    const VoString a(Sentence(Length(state)));
    const VoString b(Swapped(a.toStdString()));
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
    CountBytes(state);
}

void EqualOtherCaseQString(benchmark::State& state)
{
    const QString a = QString::fromStdString(Sentence(Length(state)));
    const QString b = QString::fromStdString(Swapped(a.toStdString()));
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b, Qt::CaseInsensitive) == 0);
    CountBytes(state);
}

void EqualOtherCaseStrcasecmp(benchmark::State& state)
{
    const std::string a = Sentence(Length(state));
    const std::string b = Swapped(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(strcasecmp(a.c_str(), b.c_str()) == 0);
    CountBytes(state);
}

// What the definition says when written down plainly: a facet call for every byte.
void EqualOtherCaseFacetPerByte(benchmark::State& state)
{
    const std::string a = Sentence(Length(state));
    const std::string b = Swapped(a);
    const std::locale locale;
    for (auto _ : state) {
        bool equal = true;
        for (std::size_t i = 0; equal && i < a.size(); ++i)
            equal = std::tolower(a[i], locale) == std::tolower(b[i], locale);
        benchmark::DoNotOptimize(equal);
    }
    CountBytes(state);
}

void EqualSameVoString(benchmark::State& state)
{
    const VoString a(Sentence(Length(state)));
    const VoString b(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
    CountBytes(state);
}

void EqualSameQString(benchmark::State& state)
{
    const QString a = QString::fromStdString(Sentence(Length(state)));
    const QString b = QString::fromStdString(Sentence(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b, Qt::CaseInsensitive) == 0);
    CountBytes(state);
}

void EqualSameCaseSensitiveString(benchmark::State& state)
{
    const VoCaseSensitiveString a(VoString(Sentence(Length(state))));
    const VoCaseSensitiveString b(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
    CountBytes(state);
}

void FindAbsentVoString(benchmark::State& state)
{
    const VoString text(Sentence(Length(state)));
    const VoString needle("DOGS");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find(needle));
    CountBytes(state);
}

void FindAbsentCaseSensitiveVoString(benchmark::State& state)
{
    const VoString text(Sentence(Length(state)));
    const VoString needle("dogs");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find(needle, VoString::CaseSensitive));
    CountBytes(state);
}

void FindAbsentQString(benchmark::State& state)
{
    const QString text = QString::fromStdString(Sentence(Length(state)));
    const QString needle = QStringLiteral("DOGS");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.indexOf(needle, 0, Qt::CaseInsensitive));
    CountBytes(state);
}

void FindAbsentStdStringCaseSensitive(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    const std::string needle = "dogs";
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find(needle));
    CountBytes(state);
}

void TokenizeVoString(benchmark::State& state)
{
    const VoString text(Row(Length(state)));
    const VoString separator(",");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.tokenize(separator));
    CountBytes(state);
}

void TokenizeQStringSplit(benchmark::State& state)
{
    const QString text = QString::fromStdString(Row(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(text.split(QLatin1Char(',')));
    CountBytes(state);
}

void TokenizeQStringSplitRef(benchmark::State& state)
{
    const QString text = QString::fromStdString(Row(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(text.splitRef(QLatin1Char(',')));
    CountBytes(state);
}

void ReplaceVoString(benchmark::State& state)
{
    const VoString text(Row(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(text.replaced(",", "; "));
    CountBytes(state);
}

void ReplaceQString(benchmark::State& state)
{
    const QString text = QString::fromStdString(Row(Length(state)));
    for (auto _ : state) {
        QString changed = text;
        benchmark::DoNotOptimize(changed.replace(QLatin1String(","), QLatin1String("; ")));
    }
    CountBytes(state);
}

void HashVoString(benchmark::State& state)
{
    const VoString text(Sentence(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(std::hash<VoString>()(text));
    CountBytes(state);
}

void HashStdString(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(std::hash<std::string>()(text));
    CountBytes(state);
}

void ConstructVoString(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(VoString(text.c_str()));
}

void ConstructStdString(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(std::string(text.c_str()));
}

void ConstructQString(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromUtf8(text.c_str()));
}

// Every string asks for the global locale, which costs a process-wide lock once it is not the classic one.
void ConstructVoStringOtherLocale(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new std::numpunct<char>));
    for (auto _ : state)
        benchmark::DoNotOptimize(VoString(text.c_str()));
    std::locale::global(previous);
}

void ConcatenateVoString(benchmark::State& state)
{
    const VoString path("directory");
    for (auto _ : state)
        benchmark::DoNotOptimize("Cannot open [" + path + "\\" + path + "]: " + path + '.');
}

void ConcatenateStdString(benchmark::State& state)
{
    const std::string path = "directory";
    for (auto _ : state)
        benchmark::DoNotOptimize("Cannot open [" + path + "\\" + path + "]: " + path + '.');
}

void Base64Encode(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    const VoByteArrayOLD bytes(text.data(), text.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(VoBase64ConverterCore::Encode(bytes));
    CountBytes(state);
}

void Base64Decode(benchmark::State& state)
{
    const std::string text = Sentence(Length(state));
    const VoString encoded = VoBase64ConverterCore::Encode(VoByteArrayOLD(text.data(), text.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(VoBase64ConverterCore::Decode(encoded));
    CountBytes(state);
}

void Base64EncodeQByteArray(benchmark::State& state)
{
    const QByteArray bytes = QByteArray::fromStdString(Sentence(Length(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.toBase64());
    CountBytes(state);
}

void Base64DecodeQByteArray(benchmark::State& state)
{
    const QByteArray encoded = QByteArray::fromStdString(Sentence(Length(state))).toBase64();
    for (auto _ : state)
        benchmark::DoNotOptimize(QByteArray::fromBase64(encoded));
    CountBytes(state);
}

constexpr std::int64_t shortText = 12;
constexpr std::int64_t path = 52;
constexpr std::int64_t document = 1 << 20;
constexpr std::int64_t largeDocument = 10 << 20;

BENCHMARK(EqualOtherCaseVoString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualOtherCaseQString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualOtherCaseStrcasecmp)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualOtherCaseFacetPerByte)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualSameVoString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualSameQString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(EqualSameCaseSensitiveString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(FindAbsentVoString)->Arg(path)->Arg(document);
BENCHMARK(FindAbsentCaseSensitiveVoString)->Arg(path)->Arg(document);
BENCHMARK(FindAbsentQString)->Arg(path)->Arg(document);
BENCHMARK(FindAbsentStdStringCaseSensitive)->Arg(path)->Arg(document);
BENCHMARK(TokenizeVoString)->Arg(path)->Arg(document)->Arg(largeDocument);
BENCHMARK(TokenizeQStringSplit)->Arg(path)->Arg(document)->Arg(largeDocument);
BENCHMARK(TokenizeQStringSplitRef)->Arg(path)->Arg(document)->Arg(largeDocument);
BENCHMARK(ReplaceVoString)->Arg(path)->Arg(document);
BENCHMARK(ReplaceQString)->Arg(path)->Arg(document);
BENCHMARK(HashVoString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(HashStdString)->Arg(shortText)->Arg(path)->Arg(document);
BENCHMARK(ConstructVoString)->Arg(shortText)->Arg(path);
BENCHMARK(ConstructStdString)->Arg(shortText)->Arg(path);
BENCHMARK(ConstructQString)->Arg(shortText)->Arg(path);
BENCHMARK(ConstructVoStringOtherLocale)->Arg(shortText)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(ConcatenateVoString);
BENCHMARK(ConcatenateStdString);
BENCHMARK(Base64Encode)->Arg(document);
BENCHMARK(Base64EncodeQByteArray)->Arg(document);
BENCHMARK(Base64Decode)->Arg(document);
BENCHMARK(Base64DecodeQByteArray)->Arg(document);

} // namespace
