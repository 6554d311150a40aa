#pragma once
// A read-only zip archive through libzip, in memory or on disk, whose entries are read with a
// shared limit on inflated bytes. Declared sizes are never trusted: the limit is checked on the
// bytes as they come out of the inflater.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <boost/optional.hpp>

struct zip;

namespace TavProject
{
namespace detail
{
// The inflated bytes all reads of one project may produce together.
class InflateBudget
{
public:
    explicit InflateBudget(std::uint64_t limit) : limit_(limit) {}

    // Throws ProjectError (TooLarge) once the total passes the limit.
    void Take(std::uint64_t bytes);
    std::uint64_t Remaining() const { return limit_ - used_; }
    std::uint64_t Used() const { return used_; }
    std::uint64_t Limit() const { return limit_; }

private:
    std::uint64_t limit_;
    std::uint64_t used_ = 0;
};

class ZipArchive
{
public:
    // `what` names the archive in messages. Throw ProjectError: CannotOpen, NotAnArchive, Corrupt.
    static ZipArchive OpenFile(const std::string& path);
    static ZipArchive OpenBuffer(std::string data, const std::string& what);

    ZipArchive(ZipArchive&& other) noexcept;
    ZipArchive& operator=(ZipArchive&&) = delete;
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;
    ~ZipArchive();

    const std::string& What() const { return what_; }
    std::vector<std::string> Names() const;
    // The entry's index, the name compared exactly or ignoring ASCII case.
    boost::optional<std::uint64_t> Find(const std::string& name, bool ignoreCase = false) const;
    bool IsEncrypted(std::uint64_t index) const;
    // The entry's inflated bytes. `password` may be null for entries that are not encrypted.
    // Throws ProjectError: TooLarge past the budget, PasswordRequired or WrongPassword for
    // encrypted entries, Corrupt for damaged ones.
    std::string Read(std::uint64_t index, InflateBudget& budget, const char* password) const;

private:
    ZipArchive(::zip* archive, std::unique_ptr<std::string> buffer, std::string what);

    ::zip* zip_;
    std::unique_ptr<std::string> buffer_;  // the bytes of an archive opened from memory
    std::string what_;
};
} // namespace detail
} // namespace TavProject
