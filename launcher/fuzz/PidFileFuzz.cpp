// The PID file, by both of its readers.
#include <sstream>

#include "FuzzParameters.h"
#include "FuzzSupport.h"
#include "PidFile.h"

namespace {

constexpr std::size_t kMaxSizeForBoth = 9;

/// As a launcher that starts reads it.
std::int32_t readLoosely(const std::wstring& path)
{
    static std::wostringstream& errors = *new std::wostringstream;
    errors.str({});
    const std::int32_t pid = PidFile().read(path, errors);
    check(errors.view().empty() || pid == -1, "what is told to be wrong gives no process id");
    return pid;
}

/// As a launcher reads it that is to stop another.
std::int32_t readStrictly(const std::wstring& path)
{
    static const LauncherCliArgs& stop =
        *LauncherCliArgs::create({L"launcher", L"stop", L"--pidfile", path}).release();
    const LauncherParameters parameters = makeParameters(stop);
    const std::int32_t pid = parameters.getPidToStop();
    check(parameters.hasErrors() == (pid == -1) && pid >= -1, "a process id or an error");
    return pid;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view content = asText(data, size);
    const std::wstring path = inputFile("pid", content) + L"/pid";
    const std::int32_t loose = readLoosely(path);
    const std::int32_t strict = readStrictly(path);
    const bool isForBoth = size <= kMaxSizeForBoth && content.find('\0') == content.npos;
    if (strict != -1 && isForBoth) check(loose == strict, "the readers agree on digits");
    return 0;
}
