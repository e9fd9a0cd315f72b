// fault_shim: preloaded into a launcher, writes down the calls that it makes to
// the C library, or lets one of them fail. It takes their places in the
// launcher's own table of functions: the JVM and the C library itself call what
// they ever did.
//
//   FAULT_LOG   the file that gets a line for each call, "function@way"; or,
//               with FAULT, the line "failed" once the call has failed
//   FAULT       "function@way#pass errno": the call to fail
//   FAULT_NO_PIDFD   when it is set, the kernel seems to be one without pidfd
//
// A way is the innermost frames of the launcher that lead to a call, as offsets
// in it, so that two users of a helper function are told apart. A detached
// launcher goes on counting where its parent was.
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
#include <span>
#include <string_view>
#include <utility>

#include "Calls.h"

// Registers and tables hold pointers as numbers. NOLINTBEGIN(performance-no-int-to-ptr)
namespace {

/// The innermost frames of the launcher, as "@offset,offset". Needs no heap: a
/// signal handler may call what is listed.
struct Frames {
    std::array<char, 96> text{};
    std::size_t length = 0, count = 0;
};

/// The call to fail; all empty when all calls are to be listed.
struct Fault {
    std::array<char, 32> function{};
    std::array<char, 96> way{};
    unsigned pass = 0;
    int error = 0;
};

std::uintptr_t launcherBegin = 0, launcherEnd = 0;
Fault fault;

_Unwind_Reason_Code noteFrame(_Unwind_Context* context, void* argument)
{
    auto& [text, length, count] = *static_cast<Frames*>(argument);
    const std::uintptr_t address = _Unwind_GetIP(context) - 1;  // in the instruction that calls
    if (launcherBegin <= address && address < launcherEnd) {
        const int added = std::snprintf(text.data() + length, text.size() - length, "%c%zx",
                                        count++ == 0 ? '@' : ',', address - launcherBegin);
        length += static_cast<std::size_t>(added);
    }
    return count == 4 ? _URC_END_OF_STACK : _URC_NO_REASON;
}

void writeLine(const char* start, const char* end)
{
    const char* const path = std::getenv("FAULT_LOG");
    const int file = path ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0 || dprintf(file, "%s%s\n", start, end) < 0) std::abort();
    close(file);
}

/// Whether this call of `function` is the one to fail.
bool isToFail(const char* function)
{
    const bool listsAll = fault.pass == 0;
    if (!listsAll && std::strcmp(fault.function.data(), function) != 0) return false;
    static std::atomic<unsigned> passes{0};
    const int errnoBefore = errno;
    Frames frames;
    _Unwind_Backtrace(noteFrame, &frames);
    if (listsAll) writeLine(function, frames.text.data());
    const bool fails = !listsAll && frames.text == fault.way && ++passes == fault.pass;
    if (fails) writeLine("failed", "");
    errno = errnoBefore;
    return fails;
}

using Function = Word (*)(Word, Word, Word, Word, Word, Word);

/// The C library's own function.
template <std::size_t index>
const auto own = reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, kCalls[index].name));

template <std::size_t index>
Word wrapper(Word a, Word b, Word c, Word d, Word e, Word f)
{
    constexpr Call kCall = kCalls[index];
    if (!isToFail(kCall.name)) return own<index>(a, b, c, d, e, f);
    if (kCall.way == Way::Missing) {
        static constexpr char kNothing[] = "no_such_thing";
        constexpr std::string_view kName = kCall.name;
        (kName == "dlsym" ? b : a) = reinterpret_cast<Word>(kNothing);
        return own<index>(a, b, c, d, e, f);
    }
    if (kCall.way == Way::Code) return fault.error;
    if constexpr (kCall.stream < 6) {
        auto* const stream = reinterpret_cast<FILE*>(std::array{a, b, c, d, e, f}[kCall.stream]);
        stream->_flags |= _IO_ERR_SEEN;
        if (kCall.result == EOF) __fpurge(stream);  // it did not get to the disk
    }
    if (kCall.way == Way::Release) own<index>(a, b, c, d, e, f);
    errno = fault.error;
    return kCall.result;
}

/// Of pidfd_open(2) and pidfd_send_signal(2), the only ones that are called so.
long wrappedSyscall(long number, Word a, Word b, Word c, Word d, Word e, Word f)
{
    const bool opens = number == SYS_pidfd_open;
    const bool isUnknown = opens && std::getenv("FAULT_NO_PIDFD");
    const bool fails = isUnknown || isToFail(opens ? "pidfd_open" : "pidfd_send_signal");
    if (!fails) return syscall(number, a, b, c, d, e, f);
    errno = isUnknown ? ENOSYS : fault.error;
    return -1;
}

/// What takes the place of a function; null for one that stays.
template <std::size_t... index>
std::uintptr_t replacement(std::string_view name, std::index_sequence<index...>)
{
    void* found = name == "syscall" ? reinterpret_cast<void*>(wrappedSyscall) : nullptr;
    ((name == kCalls[index].name && (found = reinterpret_cast<void*>(wrapper<index>))), ...);
    return reinterpret_cast<std::uintptr_t>(found);
}

/// A value of a loaded file's dynamic section; without it that of its end, 0.
std::uintptr_t valueOf(const ElfW(Dyn) * entry, ElfW(Sxword) tag)
{
    while (entry->d_tag != tag && entry->d_tag != DT_NULL) ++entry;
    return entry->d_un.d_val;
}

/// Takes the places of the functions that a loaded file calls; with `only`, of
/// that one alone.
void replaceFunctions(std::uintptr_t base, const ElfW(Dyn) * dynamic, std::string_view only)
{
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto* const symbols = reinterpret_cast<const ElfW(Sym)*>(valueOf(dynamic, DT_SYMTAB));
    const auto* const names = reinterpret_cast<const char*>(valueOf(dynamic, DT_STRTAB));
    for (const auto& [table, size] : {std::pair(DT_RELA, DT_RELASZ), {DT_JMPREL, DT_PLTRELSZ}}) {
        const auto* const places = reinterpret_cast<const ElfW(Rela)*>(valueOf(dynamic, table));
        for (const auto& place : std::span(places, valueOf(dynamic, size) / sizeof *places)) {
            const auto type = ELF64_R_TYPE(place.r_info);
            if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT) continue;
            const std::string_view name = names + symbols[ELF64_R_SYM(place.r_info)].st_name;
            if (!only.empty() && name != only) continue;
            constexpr auto kAll = std::make_index_sequence<std::size(kCalls)>();
            const std::uintptr_t function = replacement(name, kAll);
            if (function == 0) continue;
            const std::uintptr_t address = base + place.r_offset;
            // Where the linker has made it read-only, too.
            mprotect(reinterpret_cast<void*>(address / page * page), page, PROT_READ | PROT_WRITE);
            *reinterpret_cast<std::uintptr_t*>(address) = function;
        }
    }
}

int visitImage(dl_phdr_info* info, std::size_t, void*)
{
    const bool isLauncher = launcherEnd == 0;  // the program comes first
    if (!isLauncher && !std::strstr(info->dlpi_name, "/libstdc++.so")) return 0;
    for (const ElfW(Phdr) & segment : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
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
    std::sscanf(text ? text : "", "%31[^@]%95[^#]#%u %d", fault.function.data(), fault.way.data(),
                &fault.pass, &fault.error);
    dl_iterate_phdr(visitImage, nullptr);
}

}  // namespace
// NOLINTEND(performance-no-int-to-ptr)
