#include "update/incoming_file.h"

#include <system_error>
#include <utility>

#include <QTemporaryFile>

namespace velicor {

namespace {

namespace fs = std::filesystem;

enum Step { makeFolder = 1, makeFile, writeFile, moveFile };

// A write that the system cut short has no reason yet; the next one meets it.
std::string reasonOf(QTemporaryFile& file) {
  file.flush();
  return file.errorString().toStdString();
}

tl::unexpected<Error> fileError(Step step, const fs::path& path, const std::string& reason) {
  return failure("velicor.files", step, path.string() + ": " + reason);
}

}  // namespace

IncomingFile::IncomingFile(fs::path folder, std::unique_ptr<QTemporaryFile> file)
    : folder_(std::move(folder)), file_(std::move(file)) {}

IncomingFile::~IncomingFile() = default;
IncomingFile::IncomingFile(IncomingFile&&) noexcept = default;
IncomingFile& IncomingFile::operator=(IncomingFile&&) noexcept = default;

Result<IncomingFile> IncomingFile::create(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return fileError(makeFolder, folder, error.message());
  auto file =
      std::make_unique<QTemporaryFile>(QString::fromStdString((folder / ".incoming-XXXXXX").string()));
  if (!file->open()) return fileError(makeFile, folder, file->errorString().toStdString());
  return IncomingFile(folder, std::move(file));
}

Status IncomingFile::append(const QByteArray& piece) {
  for (qint64 done = 0; done < piece.size();) {
    const qint64 taken = file_->write(piece.constData() + done, piece.size() - done);
    if (taken <= 0) return fileError(writeFile, folder_, reasonOf(*file_));
    done += taken;
  }
  return {};
}

Result<fs::path> IncomingFile::moveInto(const std::string& name) {
  if (!file_->flush()) return fileError(writeFile, folder_, reasonOf(*file_));
  fs::path place = folder_ / name;
  std::error_code error;
  fs::rename(file_->fileName().toStdString(), place, error);
  if (error) return fileError(moveFile, place, error.message());
  file_->setAutoRemove(false);
  return place;
}

}  // namespace velicor
