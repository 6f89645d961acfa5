#pragma once

#include <optional>
#include <string>

#include <QWidget>

namespace velicor {

namespace controls {
class Label;
}

// Says what is wrong with the capture, with a button to the settings that may be the reason. Takes no room while
// nothing is. Main thread.
class ErrorBlock : public QWidget {
 public:
  explicit ErrorBlock(QWidget* parent = nullptr);

  void setError(const std::optional<std::string>& text);

 private:
  controls::Label* const text_;
};

}  // namespace velicor
