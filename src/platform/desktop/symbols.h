#pragma once

#include <string_view>

#include <QColor>
#include <QRectF>

class QPainter;

// The interface's symbols: vector drawings on a grid of 16 by 16 units, drawn by name into a square of any
// size. Strokes and straight edges lie on whole device pixels.
namespace velicor::desktop {

enum class SymbolWeight { regular, bold };

// Whether there is a symbol of this name.
bool hasSymbol(std::string_view name);

// Paints nothing where there is no such symbol. The rectangle's corners should be on device pixels.
void drawSymbol(QPainter& painter, std::string_view name, const QRectF& rect, const QColor& color,
                SymbolWeight weight = SymbolWeight::regular);

}  // namespace velicor::desktop
