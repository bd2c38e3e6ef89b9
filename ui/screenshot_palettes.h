// The light and dark palettes the screenshot tests draw with, so every screen's pictures are
// comparable. Test support only.
#pragma once

#include <QApplication>
#include <QPalette>
#include <QStyle>

namespace pellwin::ui {

inline QPalette darkPalette() {
  QPalette p;
  const QColor window(0x2B, 0x2D, 0x31);
  const QColor base(0x1F, 0x21, 0x24);
  const QColor text(0xE8, 0xE8, 0xEA);
  p.setColor(QPalette::Window, window);
  p.setColor(QPalette::WindowText, text);
  p.setColor(QPalette::Base, base);
  p.setColor(QPalette::AlternateBase, window.lighter(115));
  p.setColor(QPalette::Text, text);
  p.setColor(QPalette::Button, window.lighter(120));
  p.setColor(QPalette::ButtonText, text);
  p.setColor(QPalette::Light, window.lighter(160));
  p.setColor(QPalette::Midlight, window.lighter(135));
  p.setColor(QPalette::Mid, window.lighter(150));
  p.setColor(QPalette::Dark, window.darker(150));
  p.setColor(QPalette::Shadow, Qt::black);
  p.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xE4));
  p.setColor(QPalette::HighlightedText, Qt::white);
  p.setColor(QPalette::PlaceholderText, QColor(0xA0, 0xA3, 0xA8));
  p.setColor(QPalette::ToolTipBase, base);
  p.setColor(QPalette::ToolTipText, text);
  return p;
}

inline QPalette lightPalette() {
  QPalette p = QApplication::style()->standardPalette();
  p.setColor(QPalette::PlaceholderText, QColor(0x6B, 0x6E, 0x73));
  return p;
}

}  // namespace pellwin::ui
