// StandardDescriptors: sees that descriptors 0 to 2 are taken.
#pragma once

/// Opens "/dev/null" on each of the descriptors 0 to 2 that is closed, so that
/// no file opened later is taken for a standard stream; where there is none, a
/// place holder, of which every use fails as of a closed one. For the very start of
/// the process. Does what it can: never fails.
void openClosedStandardDescriptors();
