/// Mounts that no other process sees.
#ifndef OWN_MOUNTS_H
#define OWN_MOUNTS_H

#include <sched.h>
#include <sys/mount.h>

/// Gives this process mounts of its own. Returns false where it may not have them.
inline bool unshareMounts() {
  return unshare(CLONE_NEWNS) == 0 &&
         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

#endif  // OWN_MOUNTS_H
