/// Splitting and joining file names and copying files, compared with std::filesystem, and
/// hexadecimal dumps, compared with xxd.
#include <fcntl.h>
#include <unistd.h>
#include <zn_file.h>
#include <zn_output.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench_files.h"
#include "bench_process.h"
#include "bench_rows.h"

namespace {

namespace fs = std::filesystem;

void writeMebibytes(const std::string& file, int count) {
  std::string letters;
  for (int c = 0; c < 256; ++c) letters += static_cast<char>(c);
  const std::string bytes = bench::mebibyteOf(letters);
  std::ofstream out(file, std::ios_base::binary);
  for (int i = 0; i < count; ++i) out << bytes;
}

// ---- Names

/// Splits at the last "/" and the last dot, without the rules for special names.
zn_lib::name_of_file splitByHand(const std::string& name) {
  const std::size_t slash = name.rfind('/');
  const std::size_t dot = name.rfind('.');
  const std::size_t base = slash + 1;
  return {name.substr(0, base), name.substr(base, dot - base), name.substr(dot + 1)};
}

void addSplitRows(const std::string& row, const std::string& name) {
  bench::addRow(row + "/zn_udf", name, [](std::string& n) { return zn_lib::splitFileName(n); });
  bench::addRow(row + "/baseline:rfind", name, splitByHand);
  // This directory has no "/" at its end, and the extension has its dot.
  bench::addRow(row + "/std_filesystem_path", name, [](const std::string& n) {
    const fs::path path(n);
    return zn_lib::name_of_file{path.parent_path(), path.stem(), path.extension()};
  });
}

void addJoinRows(const std::string& row, const zn_lib::name_of_file& parts) {
  using Parts = zn_lib::name_of_file;
  bench::addRow(row + "/zn_udf", parts,
                [](const Parts& p) { return zn_lib::createFileName(p.path, p.name, p.extension); });
  // It replaces neither "~" nor backslashes.
  bench::addRow(row + "/baseline:append", parts, [](const Parts& p) {
    std::string name;
    name.reserve(p.path.size() + p.name.size() + p.extension.size() + 2);
    return name.append(p.path).append(1, '/').append(p.name).append(1, '.').append(p.extension);
  });
  bench::addRow(row + "/std_filesystem_path", parts, [](const Parts& p) {
    return ((fs::path(p.path) / p.name).replace_extension(p.extension)).native();
  });
}

// ---- Copies

struct Copy {
  std::string source;
  std::string target;
};

/// Copies within the kernel, which does not read the source on file systems that share blocks.
bool copyInKernel(const Copy& copy) {
  constexpr std::size_t most = std::size_t{1} << 30;
  const int in = open(copy.source.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = open(copy.target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ssize_t count = 1;
  while (count > 0) count = copy_file_range(in, nullptr, out, nullptr, most, 0);
  close(in);
  close(out);
  return count == 0;
}

/// Copies through a buffer of this process.
bool copyByBlocks(const Copy& copy) {
  static std::array<char, std::size_t{1} << 17> block;
  const int in = open(copy.source.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = open(copy.target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ssize_t count = read(in, block.data(), block.size());
  while (count > 0 && write(out, block.data(), static_cast<std::size_t>(count)) == count) {
    count = read(in, block.data(), block.size());
  }
  close(in);
  close(out);
  return count == 0;
}

/// Each row replaces the copy of the previous row, so that all rows free the same blocks.
void addCopyRows(const std::string& row, const Copy& files) {
  bench::addClockRow(row + "/zn_udf", files,
                     [](const Copy& c) { return zn_lib::fileCopy(c.source, c.target, true); });
  bench::addClockRow(row + "/std_copy_file", files, [](const Copy& c) {
    return fs::copy_file(c.source, c.target, fs::copy_options::overwrite_existing);
  });
  bench::addClockRow(row + "/read_write", files, copyByBlocks);
  bench::addClockRow(row + "/baseline:copy_file_range", files, copyInKernel);
#ifdef ZN_UDF_CP
  bench::addClockRow(row + "/cp", files, [](const Copy& c) {
    return bench::runProgram({ZN_UDF_CP, c.source, c.target}).ru_nsignals;
  });
#endif
}

// ---- Dumps

template <class Operation>
void addDumpRow(const std::string& name, const std::string& out, Operation operation) {
  bench::addClockRow(name, out, [operation](const std::string& o) {
    bench::printInChild(o, operation);
    return true;
  });
}

/// Writes the rows of a dump one by one, without the header and the end of the library's dump.
void dumpByHand(const std::string& file) {
  constexpr std::size_t width = 16;
  constexpr const char* digits = "0123456789abcdef";
  std::FILE* const in = std::fopen(file.c_str(), "rb");
  std::array<unsigned char, width> bytes;
  while (const std::size_t count = std::fread(bytes.data(), 1, width, in)) {
    std::array<char, width * 4 + 3> row;
    row.fill(' ');
    for (std::size_t i = 0; i < count; ++i) {
      row[3 * i] = digits[bytes[i] / 16];
      row[3 * i + 1] = digits[bytes[i] % 16];
      row[3 * width + 2 + i] =
          bytes[i] >= ' ' && bytes[i] <= '~' ? static_cast<char>(bytes[i]) : '.';
    }
    row.back() = '\n';
    std::fwrite(row.data(), 1, row.size(), stdout);
  }
  std::fclose(in);
}

void addDumpRows(const std::string& file, const std::string& out) {
  bench::addCountedClockRow("hexDump_8MiB/zn_udf", out, [file](const std::string& o) {
    bench::printInChild(o, [file] {
      zn_lib::setVerbose(true);
      zn_lib::hexDump(file, 16);
    });
    return true;
  });
  addDumpRow("hexDump_8MiB/baseline:hand_loop", out, [file] { dumpByHand(file); });
#ifdef ZN_UDF_XXD
  addDumpRow("hexDump_8MiB/xxd", out,
             [file] { execl(ZN_UDF_XXD, ZN_UDF_XXD, file.c_str(), static_cast<char*>(nullptr)); });
#endif
}

// ---- Growth

void addGrowthRows(const TemporaryDirectory& directory) {
  const auto nameOfSize = [](std::size_t size) {
    return "/usr/" + bench::randomText("abcdefgh/.", size - 9) + ".cpp";
  };
  bench::addGrowth("splitFileName", bench::kSmallText, bench::kLargeText, nameOfSize,
                   [](std::string& n) { return zn_lib::splitFileName(n); });

  const auto file = [path = directory.file("growing")](std::size_t size) {
    writeFile(path, bench::linesOf(size));
    return Copy{path, path + "_out"};
  };
  constexpr int smallestFile = 1024;
  bench::addGrowth("fileCopy", smallestFile, bench::kLargeText, file,
                   [](const Copy& c) { return zn_lib::fileCopy(c.source, c.target, true); });
  bench::addGrowth("hexDump", smallestFile, bench::kLargeText, file, [](const Copy& c) {
    bench::printInChild(c.target, [&c] {
      zn_lib::setVerbose(true);
      zn_lib::hexDump(c.source, 16);
    });
    return true;
  });
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  addSplitRows("splitFileName_21B", "/usr/local/lib/libz.a");
  addSplitRows(
      "splitFileName_84B",
      "/home/ada/documents/projects/almanac/measurements/2024/march/station_07_humidity.csv");
  addJoinRows("createFileName_34B", {"/home/ada/documents", "station_07", "csv"});
  writeMebibytes(directory.file("copied"), 256);
  addCopyRows("fileCopy_256MiB", {directory.file("copied"), directory.file("copy")});
  writeMebibytes(directory.file("dumped"), 8);
  addDumpRows(directory.file("dumped"), directory.file("dump"));
  addGrowthRows(directory);
  return bench::runRows(argc, argv);
}
