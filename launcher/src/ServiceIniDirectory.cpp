#include "ServiceIniDirectory.h"

const wchar_t* const kServiceIniDirectory = L"/etc/default/Korvan/Orlanda/";
