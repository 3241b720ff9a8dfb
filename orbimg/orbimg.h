// Everything public.
#pragma once

#include <orbimg/core/float_point.h>
#include <orbimg/core/image.h>
#include <orbimg/core/invert.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/truncate.h>
#include <orbimg/resources/message_table.h>
#include <orbimg/stacking/composite.h>
#include <orbimg/stacking/matching.h>
#include <orbimg/stacking/median_composite.h>
#include <orbimg/tone/auto_level.h>
#include <orbimg/tone/bright.h>
#include <orbimg/tone/calculation.h>
#include <orbimg/tone/color_balance.h>
#include <orbimg/tone/false_color.h>
#include <orbimg/tone/histogram_equalization.h>
#include <orbimg/tone/reduce_tone.h>
#include <orbimg/tone/tone_curve.h>
#include <platform/bitmap_info.h>
#include <platform/colorref.h>
#include <platform/global_memory.h>
#include <platform/host_window.h>
#include <platform/logfont.h>
#include <platform/rect.h>
