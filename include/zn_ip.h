/// \file
/// IPv4 and IPv6 addresses as text, blocks and binary values.
///
///     zn_lib::IPv4 address;
///     address.set("10.20.0.0")   ->  true
///     address.getLevel()         ->  1
///     address.set("127.0.0.1")   ->  false: see below
#ifndef ZN_IP_H
#define ZN_IP_H

#include <netinet/in.h>

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// An IPv4 address. A fresh object is 0.0.0.0. The setters keep both fields in step; a host that
/// sets one of them itself uses `binaryToBlocks` or `blocksToBinary`. Prints nothing.
class ZN_UDF_API IPv4 {
 public:
  unsigned int binary = 0;       ///< in network byte order, as `in_addr` holds it
  unsigned char blocks[4] = {};  ///< the dotted parts, first to last

  /// Takes an address in dotted text. False, and nothing changes, when `validFormat` or the
  /// platform's `inet_pton` refuses it.
  ///
  /// Only addresses written with the digits 0 to 5 are taken: "10.0.0.1" and "255.255.255.0", but
  /// neither "192.168.0.1" nor "8.8.8.8". Those can be set as a value: `set(inet_addr("8.8.8.8"))`.
  bool set(const std::string& text);

  /// Takes an address in network byte order, any of them. Always true.
  bool set(unsigned int value);

  /// True when `text` is four parts of one to three digits from 0 to 5, with points between them.
  /// Parts above 255 and leading zeros pass here, not in `set`.
  bool validFormat(const std::string& text) const;

  /// Sets `blocks` to the first four parts of `text` between points, each as `std::stoi` reads it,
  /// cut to its low 8 bits; missing parts are 0. `binary` stays.
  ///
  /// A part that is no number throws std::invalid_argument, one that no int holds
  /// std::out_of_range; the blocks before it are set by then and the others 0.
  void textToBlocks(const std::string& text);

  /// Sets `blocks` to the bytes of `value`, an address in network byte order. `binary` stays.
  void binaryToBlocks(unsigned int value);

  /// Sets `binary` to the address in `blocks`. Returns 1, `inet_pton`'s success, always.
  int blocksToBinary();

  /// `binary` in dotted text.
  std::string text() const;

  /// The index, 0 to 3, of the last block that is not zero, -1 when there is none: 0 for 10.0.0.0,
  /// 2 for 10.0.30.0.
  int getLevel() const;
};

/// An IPv6 address. A fresh object is "::". Prints nothing.
class ZN_UDF_API IPv6 {
 public:
  in6_addr binary = {};  ///< 16 bytes in network byte order

  /// Takes an address in any of the textual forms that the platform's `inet_pton` accepts, up to
  /// the first NUL. False, and nothing changes, for any other text.
  bool set(const std::string& text);

  /// The address in the platform's shortest form: "::1".
  std::string text() const;
};

}  // namespace zn_lib

#endif  // ZN_IP_H
