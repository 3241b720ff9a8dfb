// CfPoint, CfSize: a point and a size that keep an integer and a floating view of themselves.
//
// Setting integers makes the floats exact; setting floats truncates the integers toward zero, held at the range of int.
// A point whose integer x or y is -1 is unset.
#pragma once

#include <orbimg/core/truncate.h>
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
  CfPoint(CPoint const& point) { Set(point.x, point.y); }
  CfPoint(CSize const& size) { Set(size.cx, size.cy); }
  virtual ~CfPoint() = default;

  CfPoint& operator=(CfPoint const& other) = default;

  void Set(int newX, int newY) {
    x = newX;
    y = newY;
    fx = newX;
    fy = newY;
  }
  void Set(double newX, double newY) {
    x = orb::TruncateToInt(newX);
    y = orb::TruncateToInt(newY);
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
  CfSize(CPoint const& point) { Set(point.x, point.y); }
  CfSize(CSize const& size) { Set(size.cx, size.cy); }
  virtual ~CfSize() = default;

  CfSize& operator=(CfSize const& other) = default;

  void Set(int newX, int newY) {
    x = newX;
    y = newY;
    fx = newX;
    fy = newY;
  }
  void Set(double newX, double newY) {
    x = orb::TruncateToInt(newX);
    y = orb::TruncateToInt(newY);
    fx = newX;
    fy = newY;
  }
};
