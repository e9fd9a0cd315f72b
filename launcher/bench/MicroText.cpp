// Text conversions, next to iconv(3) over the same text.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdlib>
#include <string>

#include "TextConversion.h"

namespace {

constexpr std::int64_t kLong = 100'000;

constexpr wchar_t kAscii[] = L"-Dcompany.product.property=/opt/product/";
constexpr wchar_t kCyrillic[] = L"-Dсвойство.продукта=/opt/каталог/данные/";

/// As long as the benchmark's argument says.
std::wstring textOf(const benchmark::State& state, const wchar_t* part)
{
    const auto size = static_cast<std::size_t>(state.range());
    std::wstring text;
    while (text.size() < size) text += part;
    text.resize(size);
    return text;
}

/// One call, into room for the largest result.
template <typename To, typename From>
To byIconv(const char* to, const char* from, const From& text)
{
    const iconv_t descriptor = iconv_open(to, from);
    To result(text.size() * sizeof(wchar_t), 0);
    std::string input(reinterpret_cast<const char*>(text.data()), text.size() * sizeof text[0]);
    char* in = input.data();
    std::size_t inSize = input.size();
    char* out = reinterpret_cast<char*>(result.data());
    std::size_t room = result.size() * sizeof result[0];
    const std::size_t before = room;
    if (iconv(descriptor, &in, &inSize, &out, &room) != 0) std::abort();
    iconv_close(descriptor);
    result.resize((before - room) / sizeof result[0]);
    return result;
}

void ToWide(benchmark::State& state, const wchar_t* part)
{
    const std::string bytes = toUtf8(textOf(state, part));
    while (state.KeepRunning()) benchmark::DoNotOptimize(toWide(bytes));
}

void ToWideReference(benchmark::State& state, const wchar_t* part)
{
    const std::string bytes = toUtf8(textOf(state, part));
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(byIconv<std::wstring>("WCHAR_T", "UTF-8", bytes));
    }
}

void ToUtf8(benchmark::State& state, const wchar_t* part)
{
    const std::wstring wide = textOf(state, part);
    while (state.KeepRunning()) benchmark::DoNotOptimize(toUtf8(wide));
}

void ToUtf8Reference(benchmark::State& state, const wchar_t* part)
{
    const std::wstring wide = textOf(state, part);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(byIconv<std::string>("UTF-8", "WCHAR_T", wide));
    }
}

void ToModifiedUtf8(benchmark::State& state, const wchar_t* part)
{
    const std::wstring wide = textOf(state, part);
    while (state.KeepRunning()) benchmark::DoNotOptimize(toModifiedUtf8(wide));
}

void FromModifiedUtf8(benchmark::State& state, const wchar_t* part)
{
    const std::string bytes = toModifiedUtf8(textOf(state, part));
    while (state.KeepRunning()) benchmark::DoNotOptimize(fromModifiedUtf8(bytes.c_str()));
}

#define BENCHMARK_TEXTS(name)                                    \
    BENCHMARK_CAPTURE(name, Ascii, kAscii)->Arg(40)->Arg(kLong); \
    BENCHMARK_CAPTURE(name, Cyrillic, kCyrillic)->Arg(40)->Arg(kLong)

BENCHMARK_TEXTS(ToWide);
BENCHMARK_TEXTS(ToWideReference);
BENCHMARK_TEXTS(ToUtf8);
BENCHMARK_TEXTS(ToUtf8Reference);
BENCHMARK_TEXTS(ToModifiedUtf8);
BENCHMARK_TEXTS(FromModifiedUtf8);

}  // namespace
