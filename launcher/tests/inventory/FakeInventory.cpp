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
    int number;  // from 1
    std::list<std::string> texts;
};

namespace {

std::ofstream calls()
{
    const char* const file = std::getenv("FAKE_INVENTORY_CALLS");
    return file ? std::ofstream(file, std::ios::app) : std::ofstream();
}

int result(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value ? std::atoi(value) : 0;
}

const char* text(graal_isolatethread_t* thread, const char* variable)
{
    const char* const value = std::getenv(variable);
    return value ? thread->texts.emplace_back(value).c_str() : nullptr;
}

}  // namespace

extern "C" int graal_create_isolate(void* parameters, void** isolate,
                                    graal_isolatethread_t** thread)
{
    static int count = 0;
    calls() << "create " << (parameters ? "parameters" : "null") << '\n';
    const int code = result("FAKE_INVENTORY_CREATE");
    if (code == 0) *isolate = *thread = new graal_isolatethread_t{++count, {}};
    return code;
}

extern "C" int graal_tear_down_isolate(graal_isolatethread_t* thread)
{
    calls() << "tear down " << thread->number << '\n';
    for (std::string& text : thread->texts) explicit_bzero(text.data(), text.size());
    delete thread;
    return result("FAKE_INVENTORY_TEAR_DOWN");
}

extern "C" const char* findJavaComponent(graal_isolatethread_t* thread, std::int32_t version,
                                         const char* arch, const char* launcher, void* reserved)
{
    calls() << "find " << thread->number << ' ' << version << ' ' << arch << ' ' << launcher << ' '
            << (reserved ? "reserved" : "null") << '\n';
    return text(thread, "FAKE_INVENTORY_PATH");
}

extern "C" const char* getLastError(graal_isolatethread_t* thread)
{
    calls() << "error " << thread->number << '\n';
    return text(thread, "FAKE_INVENTORY_ERROR");
}
