// Large configuration files of many shapes, next to a plain read of the same
// file that is decoded in one go.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <iconv.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherConfig.h"
#include "ReleaseFileJavaChecker.h"
#include "ScopedTempDir.h"
#include "ServiceInstanceParameters.h"
#include "TextConversion.h"

namespace {

/// What a file consists of: a head, and a part that is repeated; where that is
/// empty, lines of YAML that each stand deeper than the one before.
struct Shape {
    const char* fileName;
    std::string_view head;
    std::string_view part;
};

/// LauncherFile: a file of that shape and size, in a directory of its own.
class LauncherFile final {
public:
    LauncherFile(const char* name, const std::string& content)
        : path_(directory_.write(name, content))
    {
    }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::wstring directory() const { return directory_.wide(); }

private:
    ScopedTempDir directory_;
    std::string path_;
};

std::string contentOf(const Shape& shape, std::size_t size)
{
    std::string content(shape.head);
    while (content.size() + shape.part.size() <= size) content += shape.part;
    content.append(size - content.size(), '#');
    return content;
}

std::string deepYaml(std::size_t size)
{
    std::string content = "launcher-parameters:\n  work-dir: /opt\n";
    for (std::string indent(3, ' '); content.size() + indent.size() + 3 <= size; indent += ' ') {
        content += indent + "a:\n";
    }
    content.append(size - content.size(), '#');
    return content;
}

/// Of the size that is the benchmark's argument. Made once.
const LauncherFile& fileOf(const benchmark::State& state, const Shape& shape)
{
    using Key = std::tuple<std::string_view, std::string_view, std::string_view, std::int64_t>;
    static std::map<Key, LauncherFile> files;
    const Key key(shape.fileName, shape.head, shape.part, state.range());
    const auto found = files.find(key);
    if (found != files.end()) return found->second;
    const auto size = static_cast<std::size_t>(state.range());
    const std::string content = shape.part.empty() ? deepYaml(size) : contentOf(shape, size);
    return files.try_emplace(key, shape.fileName, content).first->second;
}

/// As KeepRunning(), and lets each run take its memory from the system, as the
/// first one of a process does.
bool keepRunning(benchmark::State& state)
{
    if (!state.KeepRunning()) return false;
    state.PauseTiming();
    malloc_trim(0);
    state.ResumeTiming();
    return true;
}

void YamlFile(benchmark::State& state, const Shape& shape)
{
    const std::wstring directory = fileOf(state, shape).directory();
    while (keepRunning(state)) {
        const LauncherConfig config = LauncherConfig::readFrom(directory, L"");
        if (!config.isFileRead()) state.SkipWithError(toUtf8(config.getErrorMessage()).c_str());
    }
}

void IniFile(benchmark::State& state, const Shape& shape)
{
    const std::wstring directory = fileOf(state, shape).directory() + L"/";
    while (keepRunning(state)) {
        const auto parameters = ServiceInstanceParameters::create(L"service", directory);
        if (parameters->getJavaHome().empty() && parameters->getJvmOptions().empty()) {
            state.SkipWithError("nothing was read");
        }
    }
}

void ReleaseFile(benchmark::State& state, const Shape& shape)
{
    const std::wstring javaHome = fileOf(state, shape).directory();
    const ReleaseFileJavaChecker checker(getOsUtilsFactory().getFileUtils());
    while (keepRunning(state)) {
        if (!checker.check(javaHome, 17)) state.SkipWithError("the file was not understood");
    }
}

/// The bytes of a file.
struct Bytes {
    std::unique_ptr<char[]> data;
    std::size_t size;
};

Bytes readAll(const LauncherFile& file)
{
    const int descriptor = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    fstat(descriptor, &status);
    const auto size = static_cast<std::size_t>(status.st_size);
    Bytes bytes{std::make_unique_for_overwrite<char[]>(size), size};
    if (read(descriptor, bytes.data.get(), size) != status.st_size) std::abort();
    close(descriptor);
    return bytes;
}

void decodeByIconv(benchmark::State& state, const Shape& shape)
{
    const LauncherFile& file = fileOf(state, shape);
    while (keepRunning(state)) {
        const Bytes bytes = readAll(file);
        const auto wide = std::make_unique_for_overwrite<wchar_t[]>(bytes.size);
        const iconv_t descriptor = iconv_open("WCHAR_T", "UTF-8");
        char* in = bytes.data.get();
        std::size_t inSize = bytes.size;
        char* out = reinterpret_cast<char*>(wide.get());
        std::size_t room = bytes.size * sizeof(wchar_t);
        if (iconv(descriptor, &in, &inSize, &out, &room) != 0) std::abort();
        iconv_close(descriptor);
        benchmark::DoNotOptimize(wide.get());
    }
}

/// The same with the launcher's own conversion.
void decodeByToWide(benchmark::State& state, const Shape& shape)
{
    const LauncherFile& file = fileOf(state, shape);
    while (keepRunning(state)) {
        const Bytes bytes = readAll(file);
        benchmark::DoNotOptimize(toWide(std::string_view(bytes.data.get(), bytes.size)));
    }
}

void forAllSizes(benchmark::internal::Benchmark* benchmark)
{
    constexpr std::int64_t kMegabyte = 1 << 20;
    benchmark->Arg(kMegabyte)->Arg(kMegabyte * 5 / 2)->Arg(kMegabyte * 5)->Arg(kMegabyte * 10);
    benchmark->Unit(benchmark::kMicrosecond);
}

// <file>/<shape>/<size> and <file>Reference, and <file>ToWide to tell how much
// of it the conversion is.
#define BENCHMARK_FILE(file, shape, ...)                                    \
    BENCHMARK_CAPTURE(file, shape, Shape{__VA_ARGS__})->Apply(forAllSizes); \
    BENCHMARK_CAPTURE(decodeByIconv, file##shape, Shape{__VA_ARGS__})       \
        ->Name(#file "Reference/" #shape)                                   \
        ->Apply(forAllSizes);                                               \
    BENCHMARK_CAPTURE(decodeByToWide, file##shape, Shape{__VA_ARGS__})      \
        ->Name(#file "ToWide/" #shape)                                      \
        ->Apply(forAllSizes)

constexpr char kYaml[] = "launcher.yml";
constexpr char kYamlList[] = "launcher-parameters:\n  jvm-opts:\n";
constexpr char kYamlValue[] = "launcher-parameters:\n  work-dir: ";
constexpr char kYamlAny[] = "launcher-parameters:\n  quiet: true\n";

BENCHMARK_FILE(YamlFile, Options, kYaml, kYamlList, "  - -Dcompany.product=/opt/product/value\n");
BENCHMARK_FILE(YamlFile, Cyrillic, kYaml, kYamlList, "  - -Dсвойство.продукта=/opt/каталог\n");
BENCHMARK_FILE(YamlFile, Comments, kYaml, kYamlAny,
               "  # the directory that the service works in\n  work-dir: /var/lib/product\n");
BENCHMARK_FILE(YamlFile, Variables, kYaml, kYamlList, "  - -Dproduct.home=${launcher.dir}/..\n");
BENCHMARK_FILE(YamlFile, CrLf, kYaml, "launcher-parameters:\r\n  jvm-opts:\r\n",
               "  - -Dcompany.product=/opt/product/value\r\n");
BENCHMARK_FILE(YamlFile, LongValue, kYaml, kYamlValue, "/opt/product/lib/library.jar:");
BENCHMARK_FILE(YamlFile, LongCyrillicValue, kYaml, kYamlValue, "/opt/каталог/библиотека.jar:");
BENCHMARK_FILE(YamlFile, LongValueOfVariables, kYaml, kYamlValue, "${launcher.dir}:");
BENCHMARK_FILE(YamlFile, LongValueOfBlanks, kYaml, kYamlValue, " ");
BENCHMARK_FILE(YamlFile, LongValueOfHalfVariables, kYaml, kYamlValue, "${launcher.");
BENCHMARK_FILE(YamlFile, ShortItems, kYaml, kYamlList, "  - a\n");
BENCHMARK_FILE(YamlFile, ShortComments, kYaml, kYamlAny, "#\n");
BENCHMARK_FILE(YamlFile, Blanks, kYaml, kYamlAny, " ");
BENCHMARK_FILE(YamlFile, UnusedKeys, kYaml, kYamlAny, "a:\n");
BENCHMARK_FILE(YamlFile, Deep, kYaml, "", "");

constexpr char kIni[] = "service";
constexpr char kIniHead[] = "JAVA_HOME=/opt/java\n";

BENCHMARK_FILE(IniFile, Options, kIni, kIniHead, "JAVA_OPT=-Dcompany.product=/opt/product/value\n");
BENCHMARK_FILE(IniFile, Cyrillic, kIni, kIniHead, "JAVA_OPT=-Dсвойство.продукта=/opt/каталог\n");
BENCHMARK_FILE(IniFile, Comments, kIni, kIniHead, "# the options that this service takes\n");
BENCHMARK_FILE(IniFile, CrLf, kIni, kIniHead, "JAVA_OPT=-Dcompany.product=/opt/product/value\r\n");
BENCHMARK_FILE(IniFile, LongValue, kIni, "JAVA_OPT=", "/opt/product/lib/library.jar:");
BENCHMARK_FILE(IniFile, ShortOptions, kIni, kIniHead, "JAVA_OPT=\n");
BENCHMARK_FILE(IniFile, UnknownKeys, kIni, kIniHead, "a=\n");
BENCHMARK_FILE(IniFile, ShortLines, kIni, kIniHead, "a\n");
BENCHMARK_FILE(IniFile, EmptyLines, kIni, kIniHead, "\n");

constexpr char kRelease[] = "release";
constexpr char kReleaseHead[] = "JAVA_VERSION=\"17.0.1\"\nOS_ARCH=\"x86_64\"\n";

BENCHMARK_FILE(ReleaseFile, Keys, kRelease, kReleaseHead,
               "SOURCE=\".:git:0123456789ab\"\nLIBC=\"gnu\"\nOS_NAME=\"Linux\"\n");
BENCHMARK_FILE(ReleaseFile, Cyrillic, kRelease, kReleaseHead,
               "IMPLEMENTOR=\"Производитель среды исполнения\"\n");
BENCHMARK_FILE(ReleaseFile, KnownKeys, kRelease, kReleaseHead,
               "OS_ARCH=\"x86_64\"\nJAVA_VERSION=\"17\"\n");
BENCHMARK_FILE(ReleaseFile, LongValue, kRelease, "JAVA_VERSION=17\nOS_ARCH=64", "OS_ARCH ");
BENCHMARK_FILE(ReleaseFile, ShortLines, kRelease, kReleaseHead, "a\n");

}  // namespace
