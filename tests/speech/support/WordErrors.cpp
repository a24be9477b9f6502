#include "speech_support/WordErrors.h"

#include <algorithm>
#include <vector>

namespace talvenor::test {

WordAlignment alignWords(const QStringList &reference, const QStringList &hypothesis)
{
    const qsizetype rows = reference.size() + 1;
    const qsizetype columns = hypothesis.size() + 1;
    std::vector<int> table(std::size_t(rows * columns));
    const auto cost = [&](qsizetype row, qsizetype column) -> int & {
        return table[std::size_t(row * columns + column)];
    };
    const auto differs = [&](qsizetype row, qsizetype column) {
        return reference[row - 1] == hypothesis[column - 1] ? 0 : 1;
    };
    for (qsizetype row = 0; row < rows; ++row) {
        for (qsizetype column = 0; column < columns; ++column) {
            if (row == 0 || column == 0)
                cost(row, column) = int(row + column);
            else
                cost(row, column) = std::min({cost(row - 1, column) + 1, cost(row, column - 1) + 1,
                                              cost(row - 1, column - 1) + differs(row, column)});
        }
    }

    WordAlignment alignment{cost(rows - 1, columns - 1), {}};
    for (qsizetype row = rows - 1, column = columns - 1; row > 0 && column > 0;) {
        if (cost(row, column) == cost(row - 1, column - 1) + differs(row, column)) {
            if (differs(row, column) == 0)
                alignment.matches.prepend({row - 1, column - 1});
            --row;
            --column;
        } else if (cost(row, column) == cost(row - 1, column) + 1) {
            --row;
        } else {
            --column;
        }
    }
    return alignment;
}

} // namespace talvenor::test
