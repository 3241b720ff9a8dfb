// CfPoint, CfSize: a point and a size that keep an integer and a floating view of themselves.
//
// Setting integers makes the floats exact; setting floats truncates the integers toward zero. A point whose integer x or
// y is -1 is unset.
#pragma once

#include <platform/export.h>
#include <platform/rect.h>

class ORBIMG_API CfPoint {
 public:
  int x;
  int y;
  double fx;
  double fy;

  CfPoint() {}  // no member is set
  CfPoint(int initX, int initY) { Set(initX, initY); }
  CfPoint(double initX, double initY) { Set(initX, initY); }
  CfPoint(CfPoint const& other) = default;
  explicit CfPoint(CPoint const& point) { Set(point.x, point.y); }
  explicit CfPoint(CSize const& size) { Set(size.cx, size.cy); }
  virtual ~CfPoint() = default;

  CfPoint& operator=(CfPoint const& other) = default;

  void Set(int newX, int newY) {
    x = newX;
    y = newY;
    fx = newX;
    fy = newY;
  }
  void Set(double newX, double newY) {
    x = static_cast<int>(newX);
    y = static_cast<int>(newY);
    fx = newX;
    fy = newY;
  }
};

class ORBIMG_API CfSize {
 public:
  int x;
  int y;
  double fx;
  double fy;

  CfSize() {}  // no member is set
  CfSize(int initX, int initY) { Set(initX, initY); }
  CfSize(double initX, double initY) { Set(initX, initY); }
  CfSize(CfSize const& other) = default;
  explicit CfSize(CPoint const& point) { Set(point.x, point.y); }
  explicit CfSize(CSize const& size) { Set(size.cx, size.cy); }
  virtual ~CfSize() = default;

  CfSize& operator=(CfSize const& other) = default;

  void Set(int newX, int newY) {
    x = newX;
    y = newY;
    fx = newX;
    fy = newY;
  }
  void Set(double newX, double newY) {
    x = static_cast<int>(newX);
    y = static_cast<int>(newY);
    fx = newX;
    fy = newY;
  }
};
