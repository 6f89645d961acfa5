#include <stdexcept>

#include <QProcess>

#include "peers/rows.h"

namespace velicor::benchmarks {

namespace {

// capture_cost prints markdown itself: "| scene | copy | stream | ratio |" in its last line.
void addRow(Table& table, const char* scene, const char* name, double aim) {
  QProcess program;
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  program.start(VELICOR_CAPTURE_COST, {"640", scene});
  if (!program.waitForFinished(-1) || program.exitCode() != 0)
    throw std::runtime_error("capture_cost failed");
  QStringList cells;
  for (const QByteArray& line : program.readAllStandardOutput().split('\n')) {
    if (line.startsWith("| 640")) cells = QString::fromUtf8(line).split('|');
  }
  constexpr int copy = 2, stream = 3, ratio = 4;
  if (cells.size() <= ratio) throw std::runtime_error("capture_cost printed no row");
  const auto cell = [&cells](int index) { return cells.at(index).trimmed().toStdString(); };
  table.atMost(
      std::string("capture without our windows, processor time of client and server, beside a shared-memory "
                  "grab of the root window, 640 × 400, ") +
          name,
      aim, " times", cells.at(ratio).toDouble(),
      cell(ratio) + " (" + cell(stream) + " µs, grab " + cell(copy) + " µs)");
}

}  // namespace

void addCaptureRows(Table& table) {
  addRow(table, "0", "one covering window", 1.3);
  addRow(table, "3", "four windows with alpha", 3);
}

}  // namespace velicor::benchmarks
