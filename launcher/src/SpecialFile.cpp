#include "SpecialFile.h"

#include <sys/stat.h>

bool isSpecialFile(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    return !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}
