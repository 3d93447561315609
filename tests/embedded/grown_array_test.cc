#include "embedded/model/grown_array.h"

#include <gtest/gtest.h>

namespace qelm::embedded::model {
namespace {

TEST(GrownArray, CopiesShareAndGrowByThemselves) {
  GrownArray<int> first;
  for (const int number : {1, 2, 3}) first.push_back(number);
  GrownArray<int> second(first);
  EXPECT_EQ(&second[0], &first[0]);
  second.push_back(4);
  second.push_back(5);
  GrownArray<int> third(second);
  third.push_back(6);
  second.push_back(7);
  EXPECT_EQ(first.size(), 3U);
  EXPECT_EQ(second[5], 7);
  EXPECT_EQ(third[2], 3);
  EXPECT_EQ(third[5], 6);
  EXPECT_EQ(third.Run(1, 2)[1], 3);
  EXPECT_EQ(third.Run(3, 3)[0], 4);
  EXPECT_TRUE(third.Run(6, 0).empty());
  const GrownArray<int> moved(std::move(third));
  EXPECT_EQ(moved.Run(0, 3)[0], 1);
  EXPECT_EQ(moved[4], 5);
}

}  // namespace
}  // namespace qelm::embedded::model
