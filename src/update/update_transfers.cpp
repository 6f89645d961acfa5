// What the update cycle asks of the network: the feed and the disk image.
#include <utility>

#include "update/incoming_file.h"
#include "update/update_checker.h"
#include "update/update_config.h"

namespace velicor {

namespace {

constexpr std::chrono::seconds feedPatience{10};
constexpr std::chrono::seconds imagePatience{120};

// A server that sends the feed byte by byte would never exhaust the patience.
constexpr std::chrono::seconds feedAllowance{60};
constexpr qsizetype longestFeed = 1 << 20;

constexpr int statusOk = 200;

enum ErrorCode { feedTooLong = 1, badServerResponse, badVersion };

tl::unexpected<Error> failed(ErrorCode code, std::string_view description) {
  return failure("velicor.update", code, description);
}

Result<int> badAnswer(int status) {
  return failed(badServerResponse, "bad server response: status " + std::to_string(status));
}

// A disk image on its way: the file is made when the first piece of a good answer is there.
struct Download {
  std::filesystem::path folder;
  std::optional<IncomingFile> file;

  Status open() {
    if (file) return {};
    auto created = IncomingFile::create(folder);
    if (!created) return tl::unexpected(created.error());
    file = std::move(*created);
    return {};
  }

  Status receive(int status, const QByteArray& piece) {
    if (status != statusOk) return tl::unexpected(badAnswer(status).error());
    const Status opened = open();
    return opened ? file->append(piece) : opened;
  }

  Result<std::filesystem::path> finish(const Result<int>& status, const std::string& name) {
    if (!status) return tl::unexpected(status.error());
    if (*status != statusOk) return tl::unexpected(badAnswer(*status).error());
    if (const Status opened = open(); !opened) return tl::unexpected(opened.error());
    return file->moveInto(name);
  }
};

}  // namespace

QCoro::Task<Result<Release>> UpdateChecker::fetch() {
  const auto document = std::make_shared<QByteArray>();
  const auto receive = [document](int, const QByteArray& piece) -> Status {
    if (document->size() + piece.size() > longestFeed)
      return failed(feedTooLong, "the update feed is too long");
    document->append(piece);
    return {};
  };
  WebRequest request{.url = UpdateConfig::feed(),
                     .patience = feedPatience,
                     .allowance = feedAllowance,
                     .ignoresCaches = true,
                     .mayFollow = UpdateConfig::reachesOurSite,
                     .receive = receive};
  const auto answer = session_.get(std::move(request));
  const Result<int> status = co_await answer;
  if (!status) co_return Result<Release>(tl::unexpected(status.error()));
  co_return decodeRelease(*document);
}

QCoro::Task<Result<std::filesystem::path>> UpdateChecker::downloadDMG(WebSession& session, Release release,
                                                                      std::filesystem::path caches) {
  using Place = Result<std::filesystem::path>;
  const auto name = release.imageName();
  if (!name) co_return Place(failed(badVersion, "the version \"" + release.version + "\" can't name a file"));
  const auto download = std::make_shared<Download>();
  download->folder = caches / "Updates";
  WebRequest request{.url = release.url.url(),
                     .patience = imagePatience,
                     .mayFollow = UpdateConfig::reachesOurSite,
                     .receive = [download](int status, const QByteArray& piece) {
                       return download->receive(status, piece);
                     }};
  const auto answer = session.get(std::move(request));
  const Result<int> status = co_await answer;
  co_return download->finish(status, *name);
}

}  // namespace velicor
