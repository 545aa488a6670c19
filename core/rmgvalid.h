// The standard opening of an operation, for the library's own modules.
#ifndef RMG_CORE_RMGVALID_H
#define RMG_CORE_RMGVALID_H

#include <initializer_list>

#include "rmg.h"

namespace rmg {

// Tests each image in order (sources first, destination last) with
// rmgBadImageHeader. On the first bad one raises RMG_StsBadArg with the text
// of its mask, under the operation's own function and module names and the
// line of the caller's test, and returns false; true when all are good.
//
//   if (!rmg::openImages("rmgSet", kModule, __LINE__, {image})) return;
bool openImages(const char *funcName, const char *fileName, int line,
                std::initializer_list<const RmgImage *> images);

// True for the two constant texts that rmgBadHeaderText gives instead of a
// block; rmgFree leaves them alone.
bool isConstantHeaderText(const void *text);

}  // namespace rmg

#endif
