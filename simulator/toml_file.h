// A TOML file that is read key by key: whatever is not as it has to be is told of with its line, all at once, and so is
// every key that nobody has asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace simulator {

/// A file that cannot be understood. what() has a line for each mistake: "FILE:LINE: what is there, and what is
/// expected".
class WrongFile : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

struct TomlDocument;

/// A table of the file. What is asked for is nothing when the key is not there, and when its value is a mistake, which
/// the file keeps until its end.
class TomlTable {
public:
    bool has(const std::string &key) const;
    std::vector<std::string> keys() const;

    std::optional<std::int64_t> integer(const std::string &key, std::int64_t least, std::int64_t most) const;
    std::optional<double> number(const std::string &key, double least, double most) const;
    std::optional<bool> boolean(const std::string &key) const;
    /// With something in it, and without control characters.
    std::optional<std::string> text(const std::string &key) const;
    std::optional<std::vector<std::string>> texts(const std::string &key) const;
    /// Which of these words it is.
    std::optional<std::size_t> word(const std::string &key, std::span<const char *const> words) const;
    /// A number of 64 bits, of which a file's numbers hold 63: the others are in quotes.
    std::optional<std::uint64_t> service_id(const std::string &key) const;
    /// A date and time with its offset, in seconds since 1970 UTC.
    std::optional<std::int64_t> moment(const std::string &key) const;
    std::optional<TomlTable> table(const std::string &key) const;
    /// Of an array.
    std::vector<TomlTable> tables(const std::string &key) const;

    /// It is a mistake when the key is not there.
    void require(const std::string &key, const std::string &what) const;
    /// The value of a key is a mistake: tells what it is, and what is expected.
    void refuse(const std::string &key, const std::string &expected) const;
    /// Something else is wrong with a key, or with the table where it has no such key.
    void complain(const std::string &key, const std::string &text) const;

private:
    friend class TomlFile;
    TomlTable(std::shared_ptr<TomlDocument> document, const void *table) : document_(std::move(document)), table_(table)
    {
    }

    std::shared_ptr<TomlDocument> document_;
    const void *table_; ///< the library's, whose header takes far longer to compile than what uses it
};

class TomlFile {
public:
    /// Throws WrongFile when it is no TOML, and std::invalid_argument when it cannot be read.
    explicit TomlFile(const std::string &path);

    TomlTable root() const;
    /// Of the folder that the file lies in, where a path is relative.
    std::string resolved(const std::string &path) const;
    /// All has been asked for: throws WrongFile when there is a mistake.
    void finish() const;

private:
    std::string path_;
    std::shared_ptr<TomlDocument> document_;
};

} // namespace simulator
