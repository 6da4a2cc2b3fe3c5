/// \file
/// \ingroup family_ip
/// Converts IPv4 and IPv6 addresses between text, blocks and binary values.
///
///     zn_lib::IPv4 address;
///     address.set("10.20.0.0")   ->  true
///     address.getLevel()         ->  1
///     address.set("127.0.0.1")   ->  false   // only the digits 0 to 5 are accepted
#ifndef ZN_IP_H
#define ZN_IP_H

#include <netinet/in.h>

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Represents an IPv4 address. A new object is 0.0.0.0. The `set` functions keep both fields
/// consistent. A host that writes one field itself updates the other with `binaryToBlocks` or
/// `blocksToBinary`. Prints nothing.
class ZN_UDF_API IPv4 {
 public:
  unsigned int binary = 0;       ///< in network byte order, as in `in_addr`
  unsigned char blocks[4] = {};  ///< the dotted parts, first to last

  /// Sets the address from dotted text. Returns false and changes nothing if `validFormat` or the
  /// platform's `inet_pton` rejects the text.
  ///
  /// Only addresses written with the digits 0 to 5 are accepted: "10.0.0.1" and "255.255.255.0",
  /// but neither "192.168.0.1" nor "8.8.8.8". Set those as a value:
  ///
  ///     address.set("10.0.0.1")            ->  true
  ///     address.set("8.8.8.8")             ->  false
  ///     address.set(inet_addr("8.8.8.8"))  ->  true
  ///     address.text()                     ->  "8.8.8.8"
  bool set(const std::string& text);

  /// Sets the address from a value in network byte order. Every value is valid. Always returns
  /// true.
  bool set(unsigned int value);

  /// Returns true if `text` is four parts separated by dots, each of one to three digits from 0 to
  /// 5. Parts above 255 and leading zeros are accepted here, but not by `set`.
  ///
  ///     address.validFormat("555.0.0.0")  ->  true
  bool validFormat(const std::string& text) const;

  /// Sets `blocks` to the first four dotted parts of `text`. Each part is read by `std::stoi` and
  /// cut to its low 8 bits. Missing parts are 0. `binary` is unchanged.
  ///
  /// Throws std::invalid_argument if a part is empty or not a number, and std::out_of_range if it
  /// does not fit in an int. The blocks before that part are then set, and the others are 0.
  ///
  ///     address.textToBlocks("192.168.0.1"); address.blocks[1]  ->  168
  void textToBlocks(const std::string& text);

  /// Sets `blocks` to the bytes of `value`, which is in network byte order. `binary` is unchanged.
  ///
  ///     address.binaryToBlocks(inet_addr("10.0.30.0")); address.blocks[2]  ->  30
  void binaryToBlocks(unsigned int value);

  /// Sets `binary` to the address in `blocks`. Always returns 1, like a successful `inet_pton`.
  ///
  ///     address.blocksToBinary()  ->  1
  int blocksToBinary();

  /// Returns `binary` as dotted text.
  ///
  ///     address.text()  ->  "10.0.30.0"
  std::string text() const;

  /// Returns the index, 0 to 3, of the last block that is not zero: 0 for 10.0.0.0, 2 for
  /// 10.0.30.0. Returns -1 if all blocks are zero.
  ///
  ///     address.getLevel()  ->  2
  int getLevel() const;
};

/// Represents an IPv6 address. A new object is "::". Prints nothing.
///
///     IPv6 six;
///     six.set("2001:db8:0:0:0:0:0:1")  ->  true
///     six.text()                       ->  "2001:db8::1"
class ZN_UDF_API IPv6 {
 public:
  in6_addr binary = {};  ///< 16 bytes in network byte order

  /// Sets the address from text, up to its first NUL, in any form that the platform's `inet_pton`
  /// accepts. Returns false and changes nothing for any other text.
  bool set(const std::string& text);

  /// Returns the address in the platform's shortest form, such as "::1".
  std::string text() const;
};

}  // namespace zn_lib

#endif  // ZN_IP_H
