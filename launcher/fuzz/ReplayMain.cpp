// Runs a fuzz target on every file of a directory, so that its corpus is a
// test wherever there is no fuzzer.
#include <cstdio>
#include <filesystem>
#include <vector>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    check(argc == 2, "the one argument is a directory");
    int count = 0;
    for (const auto& file : std::filesystem::directory_iterator(argv[1])) {
        std::fprintf(stderr, "%s\n", file.path().filename().c_str());  // the last one failed
        const std::string text = readText(file);
        // Of its very size, so that reading past its end is seen.
        const std::vector<std::uint8_t> input(text.begin(), text.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++count;
    }
    check(count > 0, "there are files in the directory");
}
