#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <QByteArray>

#include "platform/base/error.h"

class QTemporaryFile;

namespace velicor {

// A file that is there for others only once it is whole. Until then it has another name, or none, in the same
// folder, and it goes with this object.
class IncomingFile {
 public:
  // Makes the folder, and those above it, where they are missing.
  static Result<IncomingFile> create(const std::filesystem::path& folder);
  ~IncomingFile();
  IncomingFile(IncomingFile&&) noexcept;
  IncomingFile& operator=(IncomingFile&&) noexcept;

  Status append(const QByteArray& piece);

  // Gives it its name in the folder, in the place of a file that has it already.
  Result<std::filesystem::path> moveInto(const std::string& name);

 private:
  IncomingFile(std::filesystem::path folder, std::unique_ptr<QTemporaryFile> file);

  std::filesystem::path folder_;
  std::unique_ptr<QTemporaryFile> file_;
};

}  // namespace velicor
