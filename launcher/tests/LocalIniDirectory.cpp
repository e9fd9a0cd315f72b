// In the place of the library's unit: a launcher with its ini files in the working directory.
#include "ServiceIniDirectory.h"

const wchar_t* const kServiceIniDirectory = L"ini/";
