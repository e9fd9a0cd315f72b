// An inventory library without Java. Appends a line per call, with the
// arguments, to the file FAKE_INVENTORY_CALLS, and gives what these variables
// say: FAKE_INVENTORY_PATH and FAKE_INVENTORY_ERROR, null when unset, and the
// results FAKE_INVENTORY_CREATE and FAKE_INVENTORY_TEAR_DOWN.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <list>
#include <string>

/// An isolate and its one thread.
struct graal_isolatethread_t {
    std::list<std::string> texts;  // unreadable after its end
};

namespace {

const char* setting(const char* variable, const char* otherwise)
{
    const char* const value = std::getenv(variable);
    return value ? value : otherwise;
}

std::ofstream calls()
{
    return std::ofstream(setting("FAKE_INVENTORY_CALLS", "/dev/null"), std::ios::app);
}

const char* text(graal_isolatethread_t* thread, const char* variable)
{
    const char* const value = setting(variable, nullptr);
    return value ? thread->texts.emplace_back(value).c_str() : nullptr;
}

}  // namespace

extern "C" int graal_create_isolate(void* parameters, void** isolate,
                                    graal_isolatethread_t** thread)
{
    calls() << "create " << (parameters ? "parameters" : "null") << '\n';
    const int code = std::atoi(setting("FAKE_INVENTORY_CREATE", "0"));
    if (code == 0) *isolate = *thread = new graal_isolatethread_t;
    return code;
}

extern "C" int graal_tear_down_isolate(graal_isolatethread_t* thread)
{
    calls() << "tear down\n";
    for (std::string& text : thread->texts) explicit_bzero(text.data(), text.size());
    delete thread;
    return std::atoi(setting("FAKE_INVENTORY_TEAR_DOWN", "0"));
}

extern "C" const char* findJavaComponent(graal_isolatethread_t* thread, std::int32_t version,
                                         const char* arch, const char* launcher, void* reserved)
{
    calls() << "find " << version << ' ' << arch << ' ' << launcher << ' '
            << (reserved ? "reserved" : "null") << '\n';
    return text(thread, "FAKE_INVENTORY_PATH");
}

extern "C" const char* getLastError(graal_isolatethread_t* thread)
{
    calls() << "error\n";
    return text(thread, "FAKE_INVENTORY_ERROR");
}
