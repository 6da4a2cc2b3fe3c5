/// Copies the contents of files.
#ifndef ZN_INTERNAL_COPY_H
#define ZN_INTERNAL_COPY_H

#include "descriptor.h"

namespace zn_lib::internal {

/// Copies `source` from its current position to its end. The copy ends early if a read or a write
/// fails; `target` then contains everything before the failure.
void copyContents(const Descriptor& source, const Descriptor& target);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_COPY_H
