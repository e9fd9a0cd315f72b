// fault_shim: preloaded into a launcher, writes down the calls that it makes to
// the C library, or lets one of them fail. It takes their places in the
// launcher's own table of functions: the JVM and the C library itself call what
// they ever did.
//
//   FAULT_LOG   the file that gets a line for each call: function, way, and
//               the addresses of the way, innermost first; or, with FAULT, the
//               line "failed" once the call has failed
//   FAULT       "function way pass errno": the call to fail
//   FAULT_NO_PIDFD   when it is set, the kernel seems to be one without pidfd
//
// A way stands for the innermost frames of the launcher that lead to a call, so
// that two users of a helper function are told apart. A detached launcher goes
// on counting where its parent was.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unwind.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "Calls.h"

// Registers and tables hold pointers as numbers. NOLINTBEGIN(performance-no-int-to-ptr)
namespace {

constexpr std::size_t kCount = std::size(kCalls);

/// The innermost frames of the launcher, as offsets in it.
struct Frames {
    std::array<std::uintptr_t, 4> offsets{};
    std::size_t size = 0;

    [[nodiscard]] std::uint32_t key() const  // FNV-1a
    {
        std::uint32_t hash = 2166136261U;
        for (const std::uintptr_t offset : offsets) {
            hash = (hash ^ static_cast<std::uint32_t>(offset)) * 16777619U;
        }
        return hash;
    }
};

/// The call to fail; no name when all calls are to be listed.
struct Fault {
    std::array<char, 32> name{};
    unsigned frames = 0, pass = 0;
    int error = 0;
};

std::uintptr_t launcherBegin = 0, launcherEnd = 0;
Fault fault;

_Unwind_Reason_Code noteFrame(_Unwind_Context* context, void* argument)
{
    auto& frames = *static_cast<Frames*>(argument);
    const std::uintptr_t address = _Unwind_GetIP(context);
    if (launcherBegin <= address && address < launcherEnd) {
        frames.offsets[frames.size++] = address - launcherBegin;
    }
    return frames.size == frames.offsets.size() ? _URC_END_OF_STACK : _URC_NO_REASON;
}

void writeLine(const char* line)
{
    const char* const path = std::getenv("FAULT_LOG");
    const int file = path ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0 || write(file, line, std::strlen(line)) < 0) std::abort();
    close(file);
}

void list(const char* name, const Frames& frames)
{
    std::array<char, 160> line{};
    int length = std::snprintf(line.data(), line.size(), "%s %08x", name, frames.key());
    for (std::size_t i = 0; i < frames.size; ++i) {
        const auto used = static_cast<std::size_t>(length);
        length += std::snprintf(line.data() + used, line.size() - used, " %zx", frames.offsets[i]);
    }
    line[static_cast<std::size_t>(length)] = '\n';
    writeLine(line.data());
}

/// Whether this call of `name` is the one to fail.
bool isToFail(const char* name)
{
    const bool listsAll = fault.name.front() == '\0';
    if (!listsAll && std::strcmp(fault.name.data(), name) != 0) return false;
    static std::atomic<unsigned> passes{0};
    const int errnoBefore = errno;
    Frames frames;
    _Unwind_Backtrace(noteFrame, &frames);
    if (listsAll) list(name, frames);
    const bool fails = !listsAll && frames.key() == fault.frames && ++passes == fault.pass;
    if (fails) writeLine("failed\n");
    errno = errnoBefore;
    return fails;
}

using Function = Word (*)(Word, Word, Word, Word, Word, Word);

/// The C library's own functions.
std::array<Function, kCount> own{};

template <std::size_t index>
Word wrapper(Word a, Word b, Word c, Word d, Word e, Word f)
{
    constexpr Call kCall = kCalls[index];
    const Function function = own[index];
    if (!isToFail(kCall.name)) return function(a, b, c, d, e, f);
    if (kCall.way == Way::Missing) {
        static constexpr char kNothing[] = "no_such_thing";
        // Library and symbol, or path and flags.
        constexpr std::string_view kName = kCall.name;
        Word& asked = kName == "dlsym" ? b : a;
        asked = reinterpret_cast<Word>(kNothing);
        return function(a, b, c, d, e, f);
    }
    if (kCall.way == Way::Code) return fault.error;
    const std::array<Word, 6> arguments{a, b, c, d, e, f};
    if constexpr (kCall.stream < arguments.size()) {
        auto* const stream = reinterpret_cast<FILE*>(arguments[kCall.stream]);
        stream->_flags |= _IO_ERR_SEEN;
        if (kCall.result == EOF) __fpurge(stream);  // it did not get to the disk
    }
    if (kCall.way == Way::Release) function(a, b, c, d, e, f);
    errno = fault.error;
    return kCall.result;
}

/// Stands for pidfd_open(2) and pidfd_send_signal(2) alone.
long wrappedSyscall(long number, Word a, Word b, Word c, Word d, Word e, Word f)
{
    if (number == SYS_pidfd_open && std::getenv("FAULT_NO_PIDFD")) {
        errno = ENOSYS;
        return -1;
    }
    const bool fails = (number == SYS_pidfd_open && isToFail("pidfd_open")) ||
                       (number == SYS_pidfd_send_signal && isToFail("pidfd_send_signal"));
    if (!fails) return syscall(number, a, b, c, d, e, f);
    errno = fault.error;
    return -1;
}

template <std::size_t... index>
constexpr std::array<Function, kCount> wrappers(std::index_sequence<index...>)
{
    return {wrapper<index>...};
}

/// What takes the place of a function; null for one that stays.
std::uintptr_t replacement(std::string_view name)
{
    static constexpr auto kWrappers = wrappers(std::make_index_sequence<kCount>());
    if (name == "syscall") return reinterpret_cast<std::uintptr_t>(wrappedSyscall);
    for (std::size_t i = 0; i < kCount; ++i) {
        if (name != kCalls[i].name) continue;
        own[i] = reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, kCalls[i].name));
        return reinterpret_cast<std::uintptr_t>(kWrappers[i]);
    }
    return 0;
}

/// The parts of a loaded file that tell where it keeps the addresses of the
/// functions that it calls.
struct Linkage {
    const ElfW(Sym) * symbols = nullptr;
    const char* names = "";
    std::array<std::pair<const ElfW(Rela)*, std::size_t>, 2> tables{};

    explicit Linkage(const ElfW(Dyn) * entry)
    {
        for (; entry->d_tag != DT_NULL; ++entry) {
            const auto address = entry->d_un.d_ptr;
            const std::size_t count = entry->d_un.d_val / sizeof(ElfW(Rela));
            const auto* const table = reinterpret_cast<const ElfW(Rela)*>(address);
            if (entry->d_tag == DT_SYMTAB) symbols = reinterpret_cast<const ElfW(Sym)*>(address);
            if (entry->d_tag == DT_STRTAB) names = reinterpret_cast<const char*>(address);
            if (entry->d_tag == DT_RELA) tables[0].first = table;
            if (entry->d_tag == DT_RELASZ) tables[0].second = count;
            if (entry->d_tag == DT_JMPREL) tables[1].first = table;
            if (entry->d_tag == DT_PLTRELSZ) tables[1].second = count;
        }
    }
};

void replace(std::uintptr_t place, std::uintptr_t function)
{
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    // Where the linker has made it read-only, too.
    mprotect(reinterpret_cast<void*>(place / page * page), page, PROT_READ | PROT_WRITE);
    *reinterpret_cast<std::uintptr_t*>(place) = function;
}

/// Takes the places of the functions that a loaded file calls; with `only`, of
/// that one alone.
void replaceFunctions(std::uintptr_t base, const ElfW(Dyn) * dynamic, std::string_view only)
{
    const Linkage linkage(dynamic);
    for (const auto& [table, count] : linkage.tables) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto type = ELF64_R_TYPE(table[i].r_info);
            if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT) continue;
            const ElfW(Sym)& symbol = linkage.symbols[ELF64_R_SYM(table[i].r_info)];
            const std::string_view name = linkage.names + symbol.st_name;
            if (!only.empty() && name != only) continue;
            const std::uintptr_t function = replacement(name);
            if (function != 0) replace(base + table[i].r_offset, function);
        }
    }
}

int visitImage(dl_phdr_info* info, std::size_t, void*)
{
    const bool isLauncher = launcherEnd == 0;  // the program comes first
    const bool startsThreads = std::strstr(info->dlpi_name, "/libstdc++.so") != nullptr;
    for (int i = 0; (isLauncher || startsThreads) && i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD && isLauncher) {
            launcherBegin = info->dlpi_addr;
            launcherEnd = begin + segment.p_memsz;
        }
        if (segment.p_type != PT_DYNAMIC) continue;
        replaceFunctions(info->dlpi_addr, reinterpret_cast<const ElfW(Dyn)*>(begin),
                         isLauncher ? "" : "pthread_create");
    }
    return 0;
}

__attribute__((constructor)) void takePlaces()
{
    const char* const text = std::getenv("FAULT");
    if (text && std::sscanf(text, "%31s %x %u %d", fault.name.data(), &fault.frames, &fault.pass,
                            &fault.error) != 4) {
        std::abort();
    }
    dl_iterate_phdr(visitImage, nullptr);
}

}  // namespace
// NOLINTEND(performance-no-int-to-ptr)
