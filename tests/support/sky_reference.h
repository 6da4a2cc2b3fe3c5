/// Reader of the reference values that make_sky_reference.py writes.
#ifndef SKY_REFERENCE_H
#define SKY_REFERENCE_H

#include <cstddef>
#include <fstream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

using ReferenceTable = std::vector<std::vector<double>>;

/// Returns the numbers of a line, which are separated by commas. Ignores the locale.
inline std::vector<double> readReferenceRow(const std::string& line) {
  std::istringstream in(line);
  in.imbue(std::locale::classic());
  std::vector<double> row;
  while (true) {
    double value = 0.0;
    if (!(in >> value)) throw std::runtime_error("not a number: " + line);
    row.push_back(value);
    const int separator = in.get();
    if (separator == std::istream::traits_type::eof()) return row;
    if (separator != ',') throw std::runtime_error("not a comma: " + line);
  }
}

/// Returns the lines of a reference file without its comments. Throws, and so fails the test,
/// unless the file has exactly `rows` lines of `columns` numbers.
inline ReferenceTable readReference(const std::string& name, std::size_t rows,
                                    std::size_t columns) {
  const std::string path = std::string(ZN_UDF_TEST_DATA "/") + name;
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot open " + path);
  ReferenceTable table;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.front() == '#') continue;
    table.push_back(readReferenceRow(line));
    if (table.back().size() != columns) throw std::runtime_error(path + ": " + line);
  }
  if (table.size() != rows) {
    throw std::runtime_error(path + ": " + std::to_string(table.size()) + " rows");
  }
  return table;
}

#endif  // SKY_REFERENCE_H
