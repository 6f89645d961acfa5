#pragma once

#include <string>
#include <vector>

namespace velicor::benchmarks {

// The middle one of some figures; the higher of two middle ones.
double median(std::vector<double> figures);

// "1.0 … 2.5", with so many digits behind the point; one number where all are the same.
std::string rangeOf(const std::vector<double>& figures, int digits);
std::string rounded(double figure, int digits);

// Rows of markdown: what was measured, the aim, what came out, and whether that meets the aim or by how much
// it misses it. Each row is printed when it is known.
class Table {
 public:
  Table();

  // `figure` has to be at least, or at most, `limit`.
  void atLeast(const std::string& what, double limit, const std::string& unit, double figure,
               const std::string& measured);
  void atMost(const std::string& what, double limit, const std::string& unit, double figure,
              const std::string& measured);

  // How many aims were missed.
  int misses() const { return misses_; }

 private:
  void row(const std::string& what, const std::string& aim, const std::string& measured, bool met,
           double excess);

  int misses_ = 0;
};

}  // namespace velicor::benchmarks
