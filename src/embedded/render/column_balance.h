// Strips over the columns of a frame that are to end at the same height.
//
// The lowest height is searched for with which the strips, filled in from the first column on, fit into all
// columns; what stays together is not parted.
#pragma once

#include <cstddef>
#include <vector>

#include "embedded/render/page.h"

namespace qelm::embedded::render {

// The column of each strip, from 0. Empty where they do not fit into `columns` columns of `height`.
std::vector<std::size_t> BalanceColumns(const std::vector<Strip>& strips, std::size_t columns, double height);

}  // namespace qelm::embedded::render
