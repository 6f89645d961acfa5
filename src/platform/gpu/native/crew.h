#pragma once

#include <algorithm>
#include <memory>
#include <type_traits>

namespace velicor::gpu {

// The threads that share the work on a large picture: the one that asks, and helpers that wait in between.
// Helpers come with the first picture that is large enough for them, and stay.
class Crew {
 public:
  // At most this many threads take part, the asking one included.
  explicit Crew(int threads);
  ~Crew();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  // Calls work(firstRow, endRow) for ranges that together are all rows, on several threads at once where
  // there are enough pixels, and returns when all are done. One caller at a time.
  template <typename Work>
  void forRows(int rows, int pixelsPerRow, const Work& work) {
    const int bands = bandsFor(rows, pixelsPerRow);
    if (bands < 2) return work(0, rows);
    share({[](const void* context, int firstRow, int endRow) {
             (*static_cast<const Work*>(context))(firstRow, endRow);
           },
           &work, rows, bands});
  }

  int threads() const { return threads_; }

 private:
  struct Job {
    void (*work)(const void* context, int firstRow, int endRow);
    const void* context;
    int rows;
    int bands;
  };
  class Helpers;

  int bandsFor(int rows, int pixelsPerRow) const;
  void share(const Job& job);

  const int threads_;
  std::unique_ptr<Helpers> helpers_;
};

// As many as the process has processors.
int allThreads();

}  // namespace velicor::gpu
