// rig/report/report_page_template.h
// The page of a report, as rig/report/report.html has it; "/*DATA*/" stands where its data go.
#pragma once

#include <string_view>

namespace rig {

extern const std::string_view reportPageTemplate;

} // namespace rig
