#include "peers/table.h"

#include <algorithm>
#include <cstdio>

namespace velicor::benchmarks {

namespace {

std::string shortest(double figure) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", figure);
  return text;
}

}  // namespace

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures.at(figures.size() / 2);
}

std::string rounded(double figure, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, figure);
  return text;
}

std::string rangeOf(const std::vector<double>& figures, int digits) {
  const auto [least, most] = std::minmax_element(figures.begin(), figures.end());
  const std::string from = rounded(*least, digits), to = rounded(*most, digits);
  return from == to ? from : from + " … " + to;
}

Table::Table() { std::puts("| what | aim | measured | |\n|---|---|---|---|"); }

void Table::atLeast(const std::string& what, double limit, const std::string& unit, double figure,
                    const std::string& measured) {
  row(what, "at least " + shortest(limit) + unit, measured, figure >= limit, limit / figure);
}

void Table::atMost(const std::string& what, double limit, const std::string& unit, double figure,
                   const std::string& measured) {
  row(what, "at most " + shortest(limit) + unit, measured, figure <= limit, figure / limit);
}

void Table::row(const std::string& what, const std::string& aim, const std::string& measured, bool met,
                double excess) {
  if (!met) ++misses_;
  const std::string verdict = met ? "met" : "missed, by a factor of " + rounded(excess, 2);
  std::printf("| %s | %s | %s | %s |\n", what.c_str(), aim.c_str(), measured.c_str(), verdict.c_str());
  std::fflush(stdout);
}

}  // namespace velicor::benchmarks
