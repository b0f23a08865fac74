#include "platform/region.h"
#include "test.h"

namespace wyn {
namespace {

// Rectangles on a small grid, compared with the set of its unit squares.
TEST(region, agrees_with_a_grid_of_points) {
  constexpr int side = 12;
  std::mt19937 random(7);
  auto const number = [&](int below) {
    return static_cast<int>(random() % static_cast<unsigned>(below));
  };
  for (int round = 0; round < 300; ++round) {
    region regions[2];
    bool grids[2][side][side] = {};
    for (int which = 0; which < 2; ++which) {
      for (int n = number(5); n > 0; --n) {
        int const x = number(side), y = number(side), w = number(side - x + 1),
                  h = number(side - y + 1);
        regions[which].add({double(x), double(y), double(w), double(h)});
        for (int i = x; i < x + w; ++i)
          for (int j = y; j < y + h; ++j) grids[which][i][j] = true;
      }
    }
    region const differ = regions[0].exclusive_or(regions[1]);
    double area = 0;
    for (auto const& r : differ.rects()) area += r.width * r.height;
    int expected_area = 0;
    for (int i = 0; i < side; ++i) {
      for (int j = 0; j < side; ++j) {
        bool const expected = grids[0][i][j] != grids[1][i][j];
        expected_area += expected;
        ASSERT_EQ(differ.contains({i + 0.5, j + 0.5}), expected) << "round " << round;
        ASSERT_EQ(regions[0].contains({i + 0.5, j + 0.5}), grids[0][i][j]) << "round " << round;
      }
    }
    ASSERT_DOUBLE_EQ(area, expected_area) << "rectangles overlap in round " << round;
  }
}

}  // namespace
}  // namespace wyn
