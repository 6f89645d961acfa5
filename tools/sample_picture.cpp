// A test card for Velicor: skin patches on and off the skin line, a grey ramp, saturated hues, and a soft
// portrait-like gradient.
//
//   velicor-sample FILE.png       writes the picture
//   velicor-sample --show         shows it in a window; one pixel in its corner blinks ten times a second
//   velicor-sample --full-screen  the same over the whole screen
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QRadialGradient>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace {

constexpr int width = 1120;
constexpr int height = 680;
constexpr int margin = 40;
constexpr int gap = 8;
constexpr QColor ground(46, 46, 46);

// The two skin patches of the common colour-checker chart, then seven tones of a published skin-tone scale.
constexpr std::array<QRgb, 9> skins = {qRgb(115, 82, 68),   qRgb(194, 150, 130), qRgb(246, 237, 228),
                                       qRgb(243, 231, 219), qRgb(234, 218, 186), qRgb(215, 189, 150),
                                       qRgb(160, 126, 86),  qRgb(130, 92, 67),   qRgb(96, 65, 52)};

constexpr std::array<QRgb, 6> hues = {qRgb(191, 0, 0), qRgb(191, 191, 0), qRgb(0, 191, 0),
                                      qRgb(0, 191, 191), qRgb(0, 0, 191), qRgb(191, 0, 191)};

QColor withGreenGain(QRgb colour, double gain) {
  return QColor(qRed(colour), std::min(255, static_cast<int>(std::lround(qGreen(colour) * gain))), qBlue(colour));
}

// One row per green gain: drifted green, as published, drifted pink.
void paintSkinPatches(QPainter& painter, const QRectF& area) {
  constexpr std::array gains = {1.06, 1.0, 0.94};
  // Whole pixels, so that no patch has a blended edge.
  const double w = std::floor((area.width() - gap * (skins.size() - 1.0)) / skins.size());
  const double h = std::floor((area.height() - gap * (gains.size() - 1.0)) / gains.size());
  for (std::size_t row = 0; row < gains.size(); ++row) {
    for (std::size_t i = 0; i < skins.size(); ++i) {
      const QRectF patch(area.x() + static_cast<double>(i) * (w + gap),
                         area.y() + static_cast<double>(row) * (h + gap), w, h);
      painter.fillRect(patch, withGreenGain(skins[i], gains[row]));
    }
  }
}

void paintHues(QPainter& painter, const QRectF& area) {
  const double w = std::floor(area.width() / hues.size());
  for (std::size_t i = 0; i < hues.size(); ++i) {
    painter.fillRect(QRectF(area.x() + static_cast<double>(i) * w, area.y(), w, area.height()), QColor(hues[i]));
  }
}

void paintGreyRamp(QPainter& painter, const QRect& area) {
  for (int x = 0; x < area.width(); ++x) {
    const int grey = x * 255 / (area.width() - 1);
    painter.fillRect(area.x() + x, area.y(), 1, area.height(), QColor(grey, grey, grey));
  }
}

// A lit sphere in the light skin patch's hue: smooth shading over the whole exposure range.
void paintPortrait(QPainter& painter, const QRectF& area) {
  painter.fillRect(area, QColor(58, 66, 74));
  QRadialGradient light(area.center() - QPointF(area.width() * 0.14, area.height() * 0.18), area.height() * 0.62);
  light.setColorAt(0.0, QColor(255, 226, 206));
  light.setColorAt(0.35, QColor(214, 166, 144));
  light.setColorAt(0.75, QColor(140, 100, 83));
  light.setColorAt(1.0, QColor(52, 35, 28));
  painter.setBrush(light);
  painter.setPen(Qt::NoPen);
  const double radius = area.height() * 0.42;
  painter.drawEllipse(area.center(), radius, radius);
}

QImage samplePicture() {
  QImage picture(width, height, QImage::Format_RGB32);
  picture.fill(ground);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  constexpr int inner = width - 2 * margin;
  constexpr int portraitWidth = 380;
  constexpr int columnWidth = inner - portraitWidth - 3 * gap;
  paintSkinPatches(painter, QRectF(margin, margin, columnWidth, 340));
  paintPortrait(painter, QRectF(width - margin - portraitWidth, margin, portraitWidth, 340));
  paintHues(painter, QRectF(margin, 412, inner, 100));
  paintGreyRamp(painter, QRect(margin, 540, inner, 100));
  return picture;
}

class SampleWindow : public QWidget {
 public:
  SampleWindow() : picture_(samplePicture()) {
    setWindowTitle("Sample picture");
    resize(picture_.size());
    connect(&blink_, &QTimer::timeout, this, [this] {
      on_ = !on_;
      update(0, 0, 1, 1);
    });
    blink_.start(100);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.drawImage(rect(), picture_);
    painter.fillRect(0, 0, 1, 1, on_ ? QColor(Qt::white) : ground);
  }

 private:
  QImage picture_;
  QTimer blink_;
  bool on_ = false;
};

int show(int argc, char** argv, bool fullScreen) {
  QApplication application(argc, argv);
  SampleWindow window;
  if (fullScreen) {
    // Also where no window manager sees to it.
    window.setGeometry(window.screen()->geometry());
    window.showFullScreen();
  } else {
    window.setFixedSize(window.size());
    window.show();
  }
  return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: velicor-sample FILE.png | --show | --full-screen\n");
    return 64;
  }
  const std::string_view argument = argv[1];
  if (argument == "--show" || argument == "--full-screen")
    return show(argc, argv, argument == "--full-screen");
  if (!samplePicture().save(argv[1])) {
    std::fprintf(stderr, "velicor-sample: can't write %s\n", argv[1]);
    return 73;
  }
  return 0;
}
