// The frame of the filters.
#include <orbimg/filters/filter.h>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/window_rows_internal.h>

void CImgFilter::CalcRect(int& left, int& top, int& right, int& bottom, CRect* rect) {
  NormalizeRect(rect, left, top, right, bottom);
}

void CImgFilter::CalcShift(int& dx, int& dy, int /*radius*/, COrbImage* image) {
  if (width >= image->GetWidth() && height >= image->GetHeight()) return;
  dx = (image->GetWidth() - width) / 2;
  dy = (image->GetHeight() - height) / 2;
}

void CImgFilter::SetFilterAdr(int x, int y, int plane, int radius, float** const rows, unsigned int flags) {
  orb::SetWindowRows(*this, x, y, plane, radius, flags, rows);
}
