/// The sanitizers of this build. AddressSanitizer needs more stack, memory and time.
#ifndef SANITIZERS_H
#define SANITIZERS_H

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasAddressSanitizer = true;
#elif !defined(__has_feature)
constexpr bool kHasAddressSanitizer = false;
#else
constexpr bool kHasAddressSanitizer = __has_feature(address_sanitizer);
#endif

#endif  // SANITIZERS_H
