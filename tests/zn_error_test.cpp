#include <gtest/gtest.h>
#include <zn_file.h>

#include <string>
#include <type_traits>

#include "temporary_files.h"

namespace {

/// Stands in for the file objects: FileName is made as their base only.
class Named : public zn_lib::FileName {};

static_assert(!std::is_default_constructible_v<zn_lib::FileName>, "made as a base only");
static_assert(std::has_virtual_destructor_v<zn_lib::FileName>, "the root of the file objects");

std::string returned(std::string name) {
  Named file;
  file.setFileName(name);
  return file.getFileName();
}

TEST(FileName, IsEmptyAtFirst) {
  Named file;
  EXPECT_EQ(file.nameParts.path + file.nameParts.name + file.nameParts.extension, "");
  EXPECT_EQ(file.getFileName(), "");
}

TEST(FileName, KeepsANameInItsParts) {
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
      {"~/data.cfg~", "/home/ada/data.cfg/home/ada"},
      {"  x", "x"},
      {"dir/  x", "dir/  x"},
      {"", ""},
      {"a\nb", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(returned(c[0]), c[1]) << c[0];
}

TEST(FileName, StaysAsItIsWithoutHome) {
  const Home home(nullptr);
  EXPECT_EQ(returned("~/notes.txt~"), "~/notes.txt~");
}

}  // namespace
