#include <gtest/gtest.h>
#include <zn_error.h>
#include <zn_output.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "output_capture.h"
#include "samples.h"
#include "stored_xml.h"
#include "temporary_files.h"

namespace {

using namespace std::string_literals;

class ErrorCatalog : public InTemporaryDirectory {
 protected:
  ~ErrorCatalog() override { zn_lib::setVerbose(false); }
};

/// Returns the catalog that is read from a file with the contents `xml`.
Catalog catalogOf(const std::string& xml) {
  writeFile("errors.xml", xml);
  Catalog catalog;
  EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  return catalog;
}

TEST_F(ErrorCatalog, HeaderExamples) {
  writeFile("errors.xml",
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<ERRORS>\n"
            "<ERROR><ID>1</ID><MESSAGE>Text of error one</MESSAGE></ERROR>\n"
            "<ERROR><ID>2</ID><MESSAGE>Text of error two</MESSAGE></ERROR>\n"
            "</ERRORS>\n");
  std::map<int, std::string, zn_lib::error_order> catalog;
  zn_lib::readErrorFile("errors.xml", catalog);
  zn_lib::setVerbose(true);
  EXPECT_EQ(written([&] { zn_lib::showErrorMessage(catalog, 2); }).err,
            "ERROR: #2\tText of error two\n");
  EXPECT_EQ(catalog, (Catalog{{1, "Text of error one"}, {2, "Text of error two"}}));
}

TEST_F(ErrorCatalog, ReadsCatalogs) {
  const struct {
    const char* what;
    std::string xml;
    Catalog catalog;
  } cases[] = {
      {"no error", "<E></E>", {}},
      {"any root", "<x>" + errorXml("7", "seven") + "</x>", {{7, "seven"}}},
      {"any depth", "<x><y>" + errorXml("7", "seven") + "</y></x>", {{7, "seven"}}},
      {"whitespace around",
       "<E><ERROR><ID> 7 </ID><MESSAGE> a b </MESSAGE></ERROR></E>",
       {{7, "a b "}}},
      {"no number", "<E>" + errorXml("x", "m") + "</E>", {{0, "m"}}},
      {"a negative number",
       "<E>" + errorXml("-3", "m") + errorXml("2", "n") + "</E>",
       {{-3, "m"}, {2, "n"}}},
      {"a sign", "<E>" + errorXml("+3x", "m") + "</E>", {{3, "m"}}},
      {"a huge number", "<E>" + errorXml(std::string(400, '9'), "m") + "</E>", {{-1, "m"}}},
      {"numbers beyond 32 bits",
       "<E>" + errorXml("4294967298", "a") + errorXml("-2147483649", "b") +
           errorXml("8589934591", "c") + "</E>",
       {{2, "a"}, {2147483647, "b"}, {-1, "c"}}},
      {"a huge negative number",
       "<E>" + errorXml("-" + std::string(400, '9'), "m") + "</E>",
       {{0, "m"}}},
      {"the later message wins",
       "<E>" + errorXml("1", "a") + errorXml("1", "b") + "</E>",
       {{1, "b"}}},
      {"line breaks between the elements",
       "<E><ERROR><ID>1</ID>\n<MESSAGE>a</MESSAGE>\n</ERROR></E>",
       {{0, ""}}},
      {"text after the error",
       "<E>" + errorXml("1", "a") + "\n text " + errorXml("2", "b") + "</E>",
       {{1, "a"}, {2, "b"}}},
      {"text after the number counts as the number",
       "<E><ERROR><ID>1</ID>5<MESSAGE>a</MESSAGE></ERROR></E>",
       {{5, "a"}}},
      {"text after the message counts as the message",
       "<E><ERROR><ID>1</ID><MESSAGE>a</MESSAGE>b</ERROR></E>",
       {{1, "b"}}},
      {"an empty number", "<E>" + errorXml("1", "a") + errorXml("", "b") + "</E>", {{1, "b"}}},
      {"an empty message",
       "<E>" + errorXml("1", "a") + errorXml("2", "") + "</E>",
       {{1, "a"}, {2, "a"}}},
      {"a message of whitespace",
       "<E>" + errorXml("1", "a") + errorXml("2", " ") + "</E>",
       {{1, "a"}, {2, ""}}},
      {"neither", "<E><ERROR/></E>", {{0, ""}}},
      {"the number after the message",
       "<E><ERROR><MESSAGE>a</MESSAGE><ID>1</ID></ERROR></E>",
       {{1, "a"}}},
      {"a reference at the end", "<E>" + errorXml("1", "less than &lt;") + "</E>", {{1, "<"}}},
      {"the last piece of a number", "<E>" + errorXml("1&#50;", "a") + "</E>", {{2, "a"}}},
      {"a comment within a message", "<E>" + errorXml("1", "a<!-- -->b") + "</E>", {{1, "b"}}},
      {"a CDATA section", "<E>" + errorXml("1", "<![CDATA[ a & b ]]>") + "</E>", {{1, "a & b "}}},
      {"text and a CDATA section",
       "<E>" + errorXml("1", "one <![CDATA[& two]]>") + errorXml("2", "<![CDATA[a]]> b") + "</E>",
       {{1, "& two"}, {2, "b"}}},
      {"an ampersand of an ampersand",
       "<E>" + errorXml("1", "Tom &amp; Jerry") + errorXml("2", "Tom &amp;amp; Jerry") +
           errorXml("3", "<![CDATA[Tom & Jerry]]>") + "</E>",
       {{1, "Jerry"}, {2, "amp; Jerry"}, {3, "Tom & Jerry"}}},
      {"an end tag on a line of its own",
       "<E>" + errorXml("1", "a") + errorXml("2", "\n  b\n") + "</E>",
       {{1, "a"}, {2, ""}}},
      {"a line for each element",
       "<E>\n <ERROR>\n  <ID>1</ID>\n  <MESSAGE>a</MESSAGE>\n </ERROR>\n</E>",
       {{0, ""}}},
      {"an element within a message",
       "<E><ERROR><ID>1</ID><MESSAGE>a<b>c</b>d</MESSAGE></ERROR></E>",
       {{1, "a"}}},
      {"the root is an error", errorXml("1", "a"), {{1, "a"}}},
      {"an error within an error",
       "<ERROR><ID>1</ID><MESSAGE>a</MESSAGE>" + errorXml("2", "b") + "</ERROR>",
       {{2, "b"}}},
      {"text before the number",
       "<E><ERROR>\n<ID>1</ID><MESSAGE>a</MESSAGE></ERROR></E>",
       {{1, "a"}}},
      {"the last piece",
       "<E>" + errorXml("1", "a &amp; b") + errorXml("2", "a\n  b") + errorXml("3", "a&lt;") +
           "</E>",
       {{1, "b"}, {2, "b"}, {3, "<"}}},
      {"no message",
       "<E>" + errorXml("1", "a") + "<ERROR><ID>2</ID></ERROR></E>",
       {{1, "a"}, {2, "a"}}},
      {"no number of its own",
       "<E>" + errorXml("1", "a") + "<ERROR><MESSAGE>b</MESSAGE></ERROR></E>",
       {{1, "b"}}},
      {"other case", "<E><error><id>1</id><message>a</message></error></E>", {}},
      {"attributes",
       "<E><ERROR x='1'><ID y='2'>1</ID><MESSAGE>a</MESSAGE></ERROR></E>",
       {{1, "a"}}},
      {"malformed after an error",
       "<E>" + errorXml("1", "a") + "<ERROR><ID>2</MESSAGE>",
       {{1, "a"}}},
      {"an empty file", "", {}},
      {"no XML", "\x01\xFF\0"s, {}},
      {"another encoding declared",
       "<?xml version='1.0' encoding='ISO-8859-1'?><E>" + errorXml("1", "\xC3\xA4") + "</E>",
       {{1, "\xC3\xA4"}}},
  };
  for (const auto& c : cases) EXPECT_EQ(catalogOf(c.xml), c.catalog) << c.what;
}

TEST_F(ErrorCatalog, MergesIntoAnExistingCatalog) {
  writeFile("errors.xml", "<E>" + errorXml("1", "new") + "</E>");
  Catalog catalog = {{1, "old"}, {2, "kept"}};
  EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  EXPECT_EQ(catalog, (Catalog{{1, "new"}, {2, "kept"}}));
  EXPECT_TRUE(zn_lib::readErrorFile("missing.xml", catalog));
  EXPECT_TRUE(zn_lib::readErrorFile(".", catalog));
  EXPECT_EQ(catalog.size(), 2u);
}

TEST_F(ErrorCatalog, ExpandsTheHomeDirectory) {
  const Home home(directory.c_str());
  writeFile("errors.xml", "<E>" + errorXml("1", "a") + "</E>");
  Catalog catalog;
  zn_lib::readErrorFile("~/errors.xml", catalog);
  EXPECT_EQ(catalog.size(), 1u);
  catalog.clear();
  zn_lib::readErrorFile(" ~\\errors.xml", catalog);
  EXPECT_EQ(catalog.size(), 1u) << "and takes a backslash for a slash";
}

TEST_F(ErrorCatalog, StopsAtAnEntityBomb) {
  EXPECT_EQ(catalogOf(entityBomb("E") + "<E>" + errorXml("1", "a") + errorXml("2", "&i;") + "</E>"),
            (Catalog{{1, "a"}}));
}

TEST_F(ErrorCatalog, PrintsInVerboseModeOnly) {
  Catalog catalog = {{2, "two"}, {-1, "minus"}, {10, "ten\0cut"s}};
  const std::string line(70, '-');
  const auto list = [&] { zn_lib::showErrorList(catalog); };
  const auto show = [&] { zn_lib::showErrorMessage(catalog, 5); };
  EXPECT_EQ(written(list).out, "");
  EXPECT_EQ(written(show).err, "");
  EXPECT_EQ(catalog.at(5), "") << "an unknown number is inserted in quiet mode too";
  catalog.erase(5);

  zn_lib::setVerbose(true);
  EXPECT_EQ(written(list).out, "Error list\n" + line + "\n-1 minus\n2 two\n10 ten\n" + line + "\n");
  EXPECT_EQ(written(show).err, "ERROR: #5\t\n");
  EXPECT_EQ(catalog.at(5), "");
  EXPECT_EQ(written([&] { zn_lib::showErrorMessage(catalog, -1); }).err, "ERROR: #-1\tminus\n");
  catalog.clear();
  EXPECT_EQ(written(list).out, "Error list\n" + line + "\n" + line + "\n");
}

TEST_F(ErrorCatalog, SystemErrorPrintsErrno) {
  errno = ENOENT;
  EXPECT_EQ(written([] { zn_lib::systemError(); }).err, "");
  zn_lib::setVerbose(true);
  for (const int number : {ENOENT, 0, EACCES, 99999}) {
    const std::string text = std::strerror(number);
    EXPECT_EQ(written([number] {
                errno = number;
                zn_lib::systemError();
              }).err,
              "ERROR: System error #" + std::to_string(number) + ". " + text + "\n");
  }
}

TEST(ErrorOrder, IsAscending) {
  const zn_lib::error_order before;
  EXPECT_TRUE(before(-1, 0));
  EXPECT_FALSE(before(1, 1));
  EXPECT_FALSE(before(2, 1));
}

// ---- The reader

TEST_F(ErrorCatalog, ReaderOpensExistingFilesOnly) {
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  ASSERT_NE(reader.event, nullptr);
  EXPECT_EQ(reader.event->id, 0);
  EXPECT_EQ(reader.event->tag + reader.event->message, "");
  EXPECT_FALSE(reader.parseFile()) << "no name";
  std::string name = "missing.xml";
  reader.setFileName(name);
  EXPECT_FALSE(reader.parseFile());
  name = ".";
  reader.setFileName(name);
  EXPECT_TRUE(reader.parseFile()) << "a directory opens, and reads as an empty file";
  EXPECT_TRUE(reader.event->data.empty());
}

TEST_F(ErrorCatalog, ReaderAcceptsFilesOfAnySize) {
  // The ends of the blocks that are read fall on every byte of the document.
  for (int padding = 8192 - 120; padding < 8192 + 20; ++padding) {
    const std::string xml =
        "<E>" + std::string(static_cast<std::size_t>(padding), ' ') + errorXml("1", "a") + "</E>";
    ASSERT_EQ(catalogOf(xml), (Catalog{{1, "a"}})) << padding;
  }
  for (const std::size_t size : {std::size_t{8192}, std::size_t{16384}}) {
    std::string xml = "<E>" + errorXml("1", "a") + "</E>";
    xml.resize(size, '\n');
    EXPECT_EQ(catalogOf(xml), (Catalog{{1, "a"}})) << size;
  }
}

TEST_F(ErrorCatalog, ReaderAcceptsDeepAndLongDocuments) {
  std::string deep;
  for (int i = 0; i < 300000; ++i) deep += "<a>";
  EXPECT_EQ(catalogOf(deep), Catalog());
  EXPECT_EQ(catalogOf("<E>" + errorXml("1", std::string(kLongText, 'm')) + "</E>").size(), 1u);
}

TEST(XmlEvent, SkipWhiteSpace) {
  zn_lib::XmlEvent<Catalog> handler;
  EXPECT_EQ(handler.element + handler.lastElement, "");
  EXPECT_TRUE(handler.data.empty());
  const struct {
    const char* text;
    int length;
    const char* result;
  } cases[] = {
      {"  a b  ", 7, "a b  "},
      {"\n\t", 2, ""},
      {" \t\n\v\f\rx", 7, "x"},
      {"abc", 2, "ab"},
      {"a\0b", 3, "a"},
      {"abc", 0, ""},
      {"abc", -1, ""},
      {"\xA0"
       "a",
       2,
       "\xA0"
       "a"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(handler.skipWhiteSpace(c.text, c.length), c.result) << c.text;
  const char unterminated[] = {' ', 'a', 'b'};
  EXPECT_EQ(handler.skipWhiteSpace(unterminated, 3), "ab");
}

// ---- File names

// FileName can only be created as a base.
class Named : public zn_lib::FileName {};

static_assert(!std::is_default_constructible_v<zn_lib::FileName>, "created as a base only");
static_assert(std::has_virtual_destructor_v<zn_lib::FileName>, "the root of the file objects");

std::string returned(std::string name) {
  Named file;
  file.setFileName(name);
  return file.getFileName();
}

TEST(FileName, IsInitiallyEmpty) {
  Named file;
  EXPECT_EQ(file.nameParts.path + file.nameParts.name + file.nameParts.extension, "");
  EXPECT_EQ(file.getFileName(), "");
}

TEST(FileName, StoresTheParts) {
  Named file;
  std::string name = "dir\\sub\\notes.txt";
  file.setFileName(name);
  EXPECT_EQ(name, "dir/sub/notes.txt") << "the caller's text, too";
  EXPECT_EQ(file.nameParts.path, "dir/sub/");
  EXPECT_EQ(file.nameParts.name, "notes");
  EXPECT_EQ(file.nameParts.extension, "txt");
  EXPECT_EQ(file.getFileName(), "dir/sub/notes.txt");

  name = "other";
  file.setFileName(name);
  EXPECT_EQ(file.getFileName(), "other") << "nothing of the earlier name is left";
}

TEST(FileName, ExpandsTheHomeDirectoryTwice) {
  const Home home("/home/ada");
  const char* const cases[][2] = {
      {"~/notes.txt", "/home/ada/notes.txt"},
      {"data.cfg~", "data.cfg/home/ada"},
      {"~/a~b/c", "/home/ada/a/home/adab/c"},
      {"a~/b~/c~", "a/home/ada/b/home/ada/c~"},
      {"~/data.cfg~", "/home/ada/data.cfg/home/ada"},
      {"  x", "x"},
      {"dir/  x", "dir/  x"},
      {"", ""},
      {"a\nb", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(returned(c[0]), c[1]) << c[0];
}

TEST(FileName, IsNotExpandedWithoutHome) {
  const Home home(nullptr);
  EXPECT_EQ(returned("~/notes.txt~"), "~/notes.txt~");
}

}  // namespace
