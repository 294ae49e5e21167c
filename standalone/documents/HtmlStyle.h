// HtmlStyle: how the page of results looks, on a screen and on paper.
#pragma once

#include <string_view>

namespace orv {

// The style sheet of HtmlWriter.cpp, whose classes it knows.
extern const std::string_view HtmlStyle;

}  // namespace orv
