// ServiceIniDirectory: where administrators keep the ini files of their
// services. A unit of its own, so that a program of the tests can be linked with
// another place.
#pragma once

/// Ends in a slash.
extern const wchar_t* const kServiceIniDirectory;
