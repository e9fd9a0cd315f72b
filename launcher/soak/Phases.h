// Phases: the parts of a soak beside the cycles. Each prints its figures and
// what was wrong, gives true when nothing was, works in a new `directory`, and
// has to run in a worker.
#pragma once

#include <filesystem>
#include <map>
#include <string>

/// Starts `number` services at once, on the JDKs in turn; when all are ready, a
/// stop client for each stops them.
bool runTogether(int number, const std::filesystem::path& launcher,
                 const std::map<int, std::string>& jdks, const std::filesystem::path& directory);

/// Sends a service without stop methods some hundred stop requests, and
/// compares its descriptors, threads and memory before and after.
bool measureGrowth(const std::filesystem::path& launcher,
                   const std::pair<const int, std::string>& jdk,
                   const std::filesystem::path& directory);
