#include "bench/rows/holdings_table.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>

namespace vh::bench {
namespace {

struct Scrip {
  std::string symbol, series, bseCode, bseSymbol, haircut, collateralType, close;
};

std::string RandomSymbol(std::mt19937& rng, bool withInf) {
  std::uniform_int_distribution<int> letter('A', 'Z');
  std::string s(size_t(std::uniform_int_distribution<int>(3, 10)(rng)), 'A');
  for (char& c : s)
    c = char(letter(rng));
  if (withInf)
    s.replace(std::uniform_int_distribution<size_t>(0, s.size() - 3)(rng), 3, "INF");
  return s;
}

std::vector<Scrip> MakeScrips(std::mt19937& rng, size_t count) {
  const char* const haircuts[] = {"9.50", "12.50", "15.00", "20.00", "25.00", "50.00", "100.00"};
  std::vector<Scrip> scrips(count);
  std::lognormal_distribution<double> price(5.0, 1.3);
  char buffer[32];
  for (size_t i = 0; i < count; ++i) {
    Scrip& s = scrips[i];
    s.symbol = RandomSymbol(rng, i % 50 == 7) + std::to_string(i % 10); // unique enough
    s.series = (i % 9 == 0) ? "BE" : "EQ";
    s.bseCode = std::to_string(500000 + i * 17 % 40000);
    s.bseSymbol = s.symbol.substr(0, 8);
    s.haircut = haircuts[std::uniform_int_distribution<size_t>(0, std::size(haircuts) - 1)(rng)];
    s.collateralType = s.haircut == std::string("100.00") ? "NON-APPROVED" : "APPROVED";
    std::snprintf(buffer, sizeof buffer, "%.2f", std::min(price(rng), 90000.0) + 1);
    s.close = buffer;
  }
  return scrips;
}

std::string Quantity(std::mt19937& rng, double zeroShare, double scale) {
  if (std::uniform_real_distribution<double>(0, 1)(rng) < zeroShare)
    return "0";
  return std::to_string(int64_t(std::lognormal_distribution<double>(std::log(scale), 1.5)(rng)) +
                        1);
}

} // namespace

void HoldingsTable::AddRow(const std::array<std::string_view, kHoldingsColumns>& cells) {
  for (int c = 0; c < kHoldingsColumns; ++c)
    columns_[size_t(c)].ids.push_back(columns_[size_t(c)].texts.Intern(cells[size_t(c)]));
}

HoldingsTable HoldingsTable::Generate(size_t rows, uint32_t seed) {
  std::mt19937 rng(seed);
  const std::vector<Scrip> scrips = MakeScrips(rng, 2000);
  // A few symbols are held by many clients: index = count * u^3.
  std::uniform_real_distribution<double> unit(0, 1);
  std::uniform_int_distribution<int> client(0, 199999);
  const char* const products[] = {"CNC", "CNC", "CNC", "MTF", "MRG"};
  HoldingsTable table;
  char id[16];
  for (size_t r = 0; r < rows; ++r) {
    const double u = unit(rng);
    const Scrip& s = scrips[std::min(scrips.size() - 1, size_t(double(scrips.size()) * u * u * u))];
    std::snprintf(id, sizeof id, "C%06d", client(rng));
    const std::array<std::string, 9> q = {
        Quantity(rng, 0.02, 200), Quantity(rng, 0.8, 50),  Quantity(rng, 0.7, 100),
        Quantity(rng, 0.6, 150),  Quantity(rng, 0.9, 50),  Quantity(rng, 0.95, 20),
        Quantity(rng, 0.95, 20),  Quantity(rng, 0.85, 30), Quantity(rng, 0.9, 30)};
    table.AddRow({id, products[r % std::size(products)], s.series, s.symbol, s.bseCode, s.bseSymbol,
                  q[0], q[1], q[2], q[3], q[4], q[5], q[6], q[7], q[8], s.haircut, s.collateralType,
                  s.close});
  }
  return table;
}

bool HoldingsTable::ReadCsv(const std::string& path, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot open";
    return false;
  }
  std::string line;
  if (!std::getline(in, line) ||
      std::string_view(line).substr(0, kHoldingsHeader.size()) != kHoldingsHeader) {
    error = path + ":1: the header is not the holdings header";
    return false;
  }
  std::array<std::string_view, kHoldingsColumns> cells;
  for (size_t lineNo = 2; std::getline(in, line); ++lineNo) {
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    if (line.empty())
      continue;
    size_t field = 0, start = 0;
    for (size_t i = 0; i <= line.size() && field <= cells.size(); ++i) {
      if (i == line.size() || line[i] == ',') {
        if (field < cells.size())
          cells[field] = std::string_view(line).substr(start, i - start);
        ++field;
        start = i + 1;
      }
    }
    if (field != cells.size()) {
      error = path + ":" + std::to_string(lineNo) + ": expected 18 fields";
      return false;
    }
    AddRow(cells);
  }
  return true;
}

bool HoldingsTable::WriteCsv(const std::string& path) const {
  std::ofstream out(path, std::ios::binary);
  out << kHoldingsHeader << '\n';
  for (size_t r = 0; r < Rows() && out; ++r)
    for (int c = 0; c < kHoldingsColumns; ++c)
      out << Cell(r, c) << (c + 1 < kHoldingsColumns ? ',' : '\n');
  return bool(out.flush());
}

int HoldingsTable::View(void* owner, uint64_t itemData, int column, std::string_view& text) {
  const auto* table = static_cast<const HoldingsTable*>(owner);
  if (itemData == 0 || itemData > table->Rows() || column < 0 || column >= kHoldingsColumns)
    return 0;
  text = table->Cell(size_t(itemData - 1), column);
  return 1;
}

int HoldingsTable::Fetch(void* owner, uint64_t itemData, int column, std::string& text,
                         CellStyle&) {
  std::string_view view;
  if (!View(owner, itemData, column, view))
    return 0;
  text.assign(view);
  return 1;
}

} // namespace vh::bench
