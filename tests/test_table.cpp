#include <gtest/gtest.h>

#include <numeric>

#include "data/table.h"

// One layout for all three: counted from 1, the first index running fastest.
TEST(Table, LiesColumnAfterColumn) {
    double memory[24];
    std::iota(memory, memory + 24, 0.0);
    const View<const double, 3> view(memory, 2, 3, 4);
    Table<double, 3> table;
    table.allocate(2, 3, 4);
    std::iota(table.memory(), table.memory() + 24, 0.0);
    Block<double, 2, 3, 4> block;
    std::iota(block.data, block.data + 24, 0.0);
    for (int n = 0; n < 24; ++n) {
        const int i = n % 2 + 1, j = n / 2 % 3 + 1, k = n / 6 + 1;
        EXPECT_TRUE(view(i, j, k) == n && table(i, j, k) == n && block(i, j, k) == n);
        EXPECT_TRUE(view.column(j, k)[i - 1] == n && table.column(j, k) == &table(1, j, k));
    }
}

// As the stresses of a host stand: blocks of elements, in them groups of corners, in them pairs.
TEST(Table, EntriesMayStandApart) {
    double memory[24];
    std::iota(memory, memory + 24, 0.0);
    const Spread<double, 12, 6, 2> second(memory + 1, 2, 2, 3);
    for (int e = 1; e <= 2; ++e)
        for (int c = 1; c <= 2; ++c)
            for (int q = 1; q <= 3; ++q) EXPECT_EQ(second(e, c, q), 12 * (e - 1) + 6 * (c - 1) + 2 * (q - 1) + 1);
    EXPECT_EQ(second.extent(3), 3);
}

TEST(Table, AllocatesZeroedAndHoldsNothingAfterAFailure) {
    Table<std::int32_t, 2> table;
    for (int rows : {3, 0, 5}) {
        table.allocate(rows, 2);
        EXPECT_TRUE(table.allocated() && table.extent(1) == rows && table.extent(2) == 2);
        for (int i = 1; i <= rows; ++i) EXPECT_EQ(table(i, 2)++, 0);
    }
    table.allocate_uncleared(4, 3);
    EXPECT_TRUE(table.allocated() && table.extent(1) == 4 && table.column(3) == table.memory() + 8);
    EXPECT_THROW(table.allocate(-1, 2), std::bad_alloc);
    EXPECT_TRUE(!table.allocated() && table.extent(2) == 0);
    EXPECT_THROW(table.allocate((INT64_C(1) << 62) + 1, 4), std::bad_alloc);  // the number of entries overflows
}

#ifdef VQ_CHECK_INDICES
TEST(TableDeathTest, AnIndexOutsideEndsTheProgram) {
    double memory[6] = {};
    const View<double, 2> view(memory, 3, 2);
    const Spread<double, 2, 1> spread(memory, 3, 2);
    Real<3, 2> block{};
    Table<double, 2> table;
    const char* message = "table index .* outside 1 to ";
    EXPECT_DEATH(table(1, 1) = 0, message);  // not allocated
    table.allocate(3, 2);
    for (const auto& [i, j] : {std::pair{0, 1}, {4, 1}, {1, 0}, {1, 3}}) {
        EXPECT_DEATH(view(i, j) = 0, message);
        EXPECT_DEATH(table(i, j) = 0, message);
        EXPECT_DEATH(block(i, j) = 0, message);
        EXPECT_DEATH(spread(i, j) = 0, message);
    }
    EXPECT_DEATH(table.column(3)[0] = 0, message);
}
#endif
