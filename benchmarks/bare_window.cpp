// The least that a program with a window of this toolkit is: 640 × 400 points of one colour in the middle of
// the screen. Runs until it is ended.
#include <QApplication>
#include <QPalette>
#include <QScreen>
#include <QWidget>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QWidget window;
  window.setWindowTitle("Bare window");
  window.setPalette(QPalette(QColor(0x40, 0x50, 0x60)));
  window.resize(640, 400);
  window.move(QGuiApplication::primaryScreen()->geometry().center() - window.rect().center());
  window.show();
  return QApplication::exec();
}
