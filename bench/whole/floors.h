#pragma once

#include <json/value.h>

#include "whole/report.h"

namespace bench {

// What the library has to reach, each figure a ratio of two measurements of one run or a count.
ReportTable MakeFloors(const Json::Value& cases);

}  // namespace bench
