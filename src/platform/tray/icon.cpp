#include "platform/tray/icon.h"

#include <array>

#include <QPainter>
#include <QPixmap>
#include <QStandardPaths>
#include <QtEndian>

namespace velicor::tray {

namespace {

constexpr std::array sizes{16, 18, 20, 22, 24, 32, 36, 44, 48, 64};
constexpr double edgeDarkness = 0.3;  // of each of the eight shadows that make the edge

QImage blank(int pixels) {
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

QImage tinted(const TemplateIcon& icon, int pixels, const QColor& color) {
  QImage image = blank(pixels);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.save();
  painter.scale(pixels / icon.side, pixels / icon.side);
  icon.paint(painter);
  painter.restore();
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color);
  return image;
}

}  // namespace

QImage rendered(const TemplateIcon& icon, int pixels, const QColor& color) {
  if (color.isValid()) return tinted(icon, pixels, color);
  QImage image = blank(pixels);
  QPainter painter(&image);
  const QImage shadow = tinted(icon, pixels, Qt::black);
  const double reach = pixels / icon.side * 0.6;
  painter.setOpacity(edgeDarkness);
  for (const QPointF& way : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1), QPointF(0.7, 0.7),
                             QPointF(-0.7, 0.7), QPointF(0.7, -0.7), QPointF(-0.7, -0.7)}) {
    painter.drawImage(way * reach, shadow);
  }
  painter.setOpacity(1);
  painter.drawImage(0, 0, tinted(icon, pixels, Qt::white));
  return image;
}

QIcon iconOf(const TemplateIcon& icon, const QColor& color) {
  QIcon result;
  for (const int pixels : sizes) result.addPixmap(QPixmap::fromImage(rendered(icon, pixels, color)));
  return result;
}

QList<IconPixmap> pixmapsOf(const TemplateIcon& icon) {
  QList<IconPixmap> result;
  for (const int pixels : sizes) {
    const QImage image = rendered(icon, pixels).convertToFormat(QImage::Format_ARGB32);
    QByteArray bytes(image.sizeInBytes(), Qt::Uninitialized);
    qToBigEndian<quint32>(image.constBits(), bytes.size() / 4, bytes.data());
    result.push_back({pixels, pixels, bytes});
  }
  return result;
}

QString installedName(const TemplateIcon& icon) {
  const QString file = QStringLiteral("icons/hicolor/symbolic/apps/%1.svg").arg(icon.symbolicName);
  return QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty() ? QString() : icon.symbolicName;
}

}  // namespace velicor::tray
