// Integer points, sizes and rectangles in pixels. A rectangle's right and bottom lie one past its last column and row.
#pragma once

struct CPoint {
  int x = 0;
  int y = 0;

  CPoint() = default;
  CPoint(int initX, int initY) : x(initX), y(initY) {}
};

struct CSize {
  int cx = 0;
  int cy = 0;

  CSize() = default;
  CSize(int initCx, int initCy) : cx(initCx), cy(initCy) {}
};

struct CRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  CRect() = default;
  CRect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }

  void SetRect(int l, int t, int r, int b) { *this = CRect(l, t, r, b); }
  void SetRectEmpty() { *this = CRect(); }
  bool IsRectEmpty() const { return left >= right || top >= bottom; }
  bool PtInRect(CPoint p) const { return left <= p.x && p.x < right && top <= p.y && p.y < bottom; }
};
