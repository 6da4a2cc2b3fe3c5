/// The small pools from which calls take their arguments, so that calls meet on the same files and
/// keys. The first of each pool is the simplest, to which shrinking leads.
#ifndef HISTORIES_POOLS_H
#define HISTORIES_POOLS_H

#include <string>
#include <vector>

#include "call.h"
#include "world.h"

namespace histories {

using namespace std::string_literals;

/// Returns the name of a file or a directory.
inline std::string fileName(Chooser& choose) {
  static const std::vector<std::string> all = {
      "a",           "b.txt",     "c.cfg",   "config.xml", "errors.xml",
      "run.log",     "run-1.log", "sub",     "sub/a",      "sub/b.txt",
      "c.cfg~",      "rerun.log", "home/a",  "~/a",        "sub/c.cfg",
      "../x",        "sub/",      "",        ".",          "..",
      "missing/a",   "a/b",       ".hidden", "a b",        "\xC3\xA4.txt",
      "sub\\a",      "a\0b"s,     "[",       "./a",        "d.d/e",
      " a",          "~",         "d.d",     "x~y",        std::string(300, 'l'),
      "config.xml~", "run-.log",  "sub//a",  "home",       "sub/run.log"};
  return choose.one(all);
}

/// Returns a text of any kind.
inline std::string anyText(Chooser& choose) {
  static const std::vector<std::string> all = {"",
                                               "a",
                                               "a b",
                                               " a \t\n",
                                               "yes",
                                               "12.5",
                                               "a,b,,c,",
                                               "5 March 2024 14:07",
                                               "2024-03-05T14:07:09",
                                               "a\0b"s,
                                               "\xC3\xA4\xFF\x80",
                                               "<a x='1'>t &amp; u</a>",
                                               "it's \"`quoted`\"",
                                               "first line\nsecond line\n",
                                               "10.20.30.0",
                                               "1,234.5e-3",
                                               ".T.",
                                               "\r\n",
                                               std::string(1100, 'x') + "\ntail",
                                               "~/a\\b~c",
                                               "-",
                                               "nan",
                                               "1e999",
                                               "\v\f 7x",
                                               "log-12",
                                               "%s%n",
                                               std::string("ab\n\0c\n", 6)};
  if (choose.below(4) != 3) return choose.one(all);
  std::string text;
  for (unsigned size = choose.below(12); size > 0; --size) {
    text += "ab10-., \n\0\xC3~/\\'<&T:"[choose.below(20)];
  }
  return text;
}

/// Returns a document or part of one, in the forms of settings, of catalogs and of neither.
inline std::string document(Chooser& choose) {
  static const std::vector<std::string> all = {
      "<a/>",
      "",
      "<CONFIGURATION type='T'>\n<key data_type='TEXT' describe='d'>value</key>\n"
      "<other x='1'>a &amp; b</other>\n</CONFIGURATION>\n",
      "<ERRORS>\n<ERROR><ID>1</ID><MESSAGE>one</MESSAGE></ERROR>\n"
      "<ERROR><ID> -3 </ID><MESSAGE>a &lt; b</MESSAGE></ERROR>\n</ERRORS>\n",
      "<ERRORS><ERROR>\n<ID>2</ID>\n<MESSAGE>two</MESSAGE>\n</ERROR></ERRORS>",
      "<r><key q='N' w='\"'> spread\n  over lines </key><KEY>up</KEY>",
      "<r><k>&#65;&unknown;</k><k2>lost</k2></r>",
      "<?xml version='1.0' standalone='no'?><!DOCTYPE r [<!ENTITY e 'entity'>]>"
      "<r><!--c--><?pi data?><![CDATA[<&]]><key>&e;</key></r>",
      "<r xmlns='u' xmlns:p='v'><p:k p:a='1' b='2'>t</p:k></r>",
      "<r><key>\xC3\xA4\xE2\x82\xAC</key></r>",
      "<r><key>\xFF</key></r>",
      "<a>text</b>",
      "not XML",
      "<r>" + std::string(8188, ' ') + "<key d='N'>at the edge</key></r>",
      "<ERRORS><ERROR><ID>4294967298</ID><MESSAGE>" + std::string(8180, 'm') +
          "</MESSAGE></ERROR><ERROR></ERROR></ERRORS>",
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r><k>\xE4</k></r>"};
  return choose.one(all);
}

/// Returns the contents of a file.
inline std::string contents(Chooser& choose) {
  return choose.below(3) == 2 ? document(choose) : anyText(choose);
}

inline std::string keyOf(Chooser& choose) {
  static const std::vector<std::string> all = {"key",      "other",         "UPDATE", " key ",
                                               "",         "my key",        "KEY",    "a\0b"s,
                                               "\xC3\xA4", "CONFIGURATION", "k2",     "\t"};
  return choose.one(all);
}

inline unsigned anyObject(Chooser& choose) { return choose.below(kObjects); }

/// Returns a number, of which many are small and some are at the edges.
inline int anyInt(Chooser& choose) {
  static const std::vector<int> all = {
      0,    1,    2,    3,   -1,  4,   7,   12, 13, 16,  28,    29,    30,        31,   32,
      60,   100,  195,  -61, 256, 300, 400, -2, 24, 365, 366,   999,   812,       1582, 1900,
      2000, 2023, 2024, 9,   10,  11,  21,  22, 59, 4,   65535, 65536, 2147483647};
  return choose.one(all);
}

inline char anyChar(Chooser& choose) {
  return choose.one({'a', ' ', '-', '/', ':', '.', ',', '\'', '0', '\0', 'T', '\n', '\xC3'});
}

inline double anyDouble(Chooser& choose) {
  switch (choose.below(3)) {
    case 0:
      return choose.one({0.0, 1.0, 0.5, -1.5, 7.3, 24.0, 25.5, -0.25, 0.999, 59.999, 1e6, 9.25});
    case 1:
      return choose.below(100000) / 1000.0;
    default: {
      const unsigned part = choose.below(2001);
      return (static_cast<double>(part) - 1000) / (1 + choose.below(97));
    }
  }
}

}  // namespace histories

#endif  // HISTORIES_POOLS_H
