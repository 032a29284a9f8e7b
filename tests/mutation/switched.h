// Which mutant is switched on, and what stands for a value that is not the right one. Included by every file that
// has mutants planted in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace mutation {

/// The number that the environment tells. A constant's first value takes this one: the compiler must not work it out.
inline int told() noexcept
{
    static const int number = [] {
        const char *text = std::getenv("PVR_MUTANT");
        return text != nullptr ? std::atoi(text) : 0;
    }();
    return number;
}

/// The number of the mutant that the process has to live with; 0, and so none of them, when nothing says so. The
/// compiler sees the code as it is.
constexpr int active() noexcept { return std::is_constant_evaluated() ? 0 : told(); }

/// A row that takes the place of one of a table's.
template <typename Row>
struct Change {
    int mutant = 0; ///< 0 ends a list
    std::size_t index = 0;
    Row row{};
};

template <typename Row, std::size_t count>
struct Rows {
    Row rows[count];
};

template <typename Row, std::size_t count>
constexpr Rows<Row, count> with_row(const Row (&plain)[count], std::size_t index, Row row) noexcept
{
    Rows<Row, count> all{};
    for (std::size_t i = 0; i < count; ++i)
        all.rows[i] = i == index ? row : plain[i];
    return all;
}

/// The table with the row whose mutant is active.
template <typename Row, std::size_t count, std::size_t changes>
const Row (&changed(const Row (&plain)[count], const Change<Row> (&list)[changes]) noexcept)[count]
{
    for (const Change<Row> &change : list)
        if (change.mutant != 0 && change.mutant == active()) {
            static const Rows<Row, count> now = with_row(plain, change.index, change.row);
            return now.rows;
        }
    return plain;
}

/// Which of several forms counts: the plain one is 0, the others belong to the mutants from first on.
inline std::size_t form(int first, int mutants) noexcept
{
    const int number = told() - first;
    return number >= 0 && number < mutants ? static_cast<std::size_t>(number) + 1 : 0;
}

/// Another value of the same type.
template <typename T>
constexpr T other(T value) noexcept
{
    if constexpr (std::is_same_v<T, bool>)
        return !value;
    else
        return static_cast<T>(value + 1);
}
constexpr const char *other(const char *) noexcept { return "mutated"; }
inline char *other(char *) noexcept
{
    static char text[] = "mutated";
    return text;
}

/// The table, with another value in the entry whose mutant is active: what counts is nothing; what is nothing
/// or counts zero counts sixteen, since white space counts zero, and nothing is one bit above a byte. The mutants are
/// numbered from first.
template <typename T, std::size_t size>
std::array<T, size> with_entry(std::array<T, size> table, int first, T nothing) noexcept
{
    const int entry = active() - first;
    if (entry >= 0 && entry < static_cast<int>(size)) {
        T &value = table[static_cast<std::size_t>(entry)];
        value = value == nothing || value == T{0} ? T{16} : nothing;
    }
    return table;
}

} // namespace mutation
