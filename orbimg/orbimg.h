// Everything public.
#pragma once

#include <orbimg/core/float_point.h>
#include <orbimg/core/image.h>
#include <orbimg/core/invert.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/filter.h>
#include <orbimg/filters/filter_blur.h>
#include <orbimg/filters/filter_kernel.h>
#include <orbimg/filters/filter_misc.h>
#include <orbimg/filters/filter_rows.h>
#include <orbimg/filters/filter_sharp.h>
#include <orbimg/filters/filter_special.h>
#include <orbimg/filters/rotational_gradient.h>
#include <orbimg/resources/message_table.h>
#include <orbimg/stacking/composite.h>
#include <orbimg/stacking/matching.h>
#include <orbimg/stacking/median_composite.h>
#include <orbimg/tone/auto_level.h>
#include <platform/bitmap_info.h>
#include <platform/colorref.h>
#include <platform/global_memory.h>
#include <platform/host_window.h>
#include <platform/logfont.h>
#include <platform/rect.h>
