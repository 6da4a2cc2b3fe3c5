// Converts addresses between text, blocks and values.
#include <arpa/inet.h>
#include <zn_ip.h>

#include <iostream>

int main() {
  std::cout << std::boolalpha;
  zn_lib::IPv4 address;
  std::cout << address.set("10.20.0.0") << ", level " << address.getLevel() << '\n';

  // Only text with the digits 0 to 5 is accepted. Rejected text changes nothing.
  std::cout << address.set("192.168.0.1") << ", still " << address.text() << '\n';

  // Any address can be set as a value in network byte order.
  address.set(inet_addr("192.168.0.1"));
  std::cout << address.text() << ", first block " << static_cast<int>(address.blocks[0]) << '\n';

  // A host that writes one field itself updates the other.
  address.blocks[3] = 7;
  address.blocksToBinary();
  std::cout << address.text() << '\n';

  zn_lib::IPv6 six;
  std::cout << six.set("2001:db8:0:0:0:0:0:1") << ", " << six.text() << '\n';
}
