#include <project/detail/ZipArchive.h>

#include <project/ProjectError.h>

#include <zip.h>

#include <algorithm>
#include <cstring>

namespace TavProject
{
namespace detail
{
namespace
{
// Memory grows with the data actually inflated; a declared size only sets the first step.
constexpr std::uint64_t kMaxReserve = 16u << 20;
constexpr std::size_t kChunk = 64u << 10;

std::string ErrorText(int code)
{
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    std::string text = zip_error_strerror(&error);
    zip_error_fini(&error);
    return text;
}

[[noreturn]] void ThrowOpenError(int code, const std::string& what)
{
    switch (code)
    {
    case ZIP_ER_NOZIP:
        throw ProjectError(ProjectErrorKind::NotAnArchive, what + ": not a zip archive");
    case ZIP_ER_OPEN:
    case ZIP_ER_NOENT:
    case ZIP_ER_READ:
        throw ProjectError(ProjectErrorKind::CannotOpen, what + ": cannot read: " + ErrorText(code));
    default:
        throw ProjectError(ProjectErrorKind::Corrupt, what + ": corrupt archive: " + ErrorText(code));
    }
}

::zip* OpenSource(zip_source_t* source, const std::string& what)
{
    zip_error_t error;
    zip_error_init(&error);
    ::zip* archive = zip_open_from_source(source, ZIP_RDONLY, &error);
    if (archive == nullptr)
    {
        const int code = zip_error_code_zip(&error);
        zip_error_fini(&error);
        zip_source_free(source);
        ThrowOpenError(code, what);
    }
    zip_error_fini(&error);
    return archive;
}

bool EqualIgnoringCase(const char* a, const std::string& b)
{
    const std::size_t length = std::strlen(a);
    if (length != b.size())
        return false;
    for (std::size_t i = 0; i < length; ++i)
    {
        const auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; };
        if (lower(static_cast<unsigned char>(a[i])) != lower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}
} // namespace

void InflateBudget::Take(std::uint64_t bytes)
{
    if (bytes > limit_ - used_)
    {
        used_ = limit_;
        throw ProjectError(ProjectErrorKind::TooLarge,
            "archive inflates to more than " + std::to_string(limit_ >> 20) +
                " MiB: refused as a zip bomb");
    }
    used_ += bytes;
}

ZipArchive::ZipArchive(::zip* archive, std::unique_ptr<std::string> buffer, std::string what)
    : zip_(archive), buffer_(std::move(buffer)), what_(std::move(what))
{
}

ZipArchive::ZipArchive(ZipArchive&& other) noexcept
    : zip_(other.zip_), buffer_(std::move(other.buffer_)), what_(std::move(other.what_))
{
    other.zip_ = nullptr;
}

ZipArchive::~ZipArchive()
{
    if (zip_ != nullptr)
        zip_discard(zip_);
}

ZipArchive ZipArchive::OpenFile(const std::string& path)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_file_create(path.c_str(), 0, -1, &error);  // -1: to the end
    if (source == nullptr)
    {
        const int code = zip_error_code_zip(&error);
        zip_error_fini(&error);
        ThrowOpenError(code == ZIP_ER_INVAL ? ZIP_ER_OPEN : code, path);
    }
    zip_error_fini(&error);
    // libzip takes an empty file for an empty archive; it is no project file.
    zip_stat_t stat;
    if (zip_source_stat(source, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE) != 0 && stat.size == 0)
    {
        zip_source_free(source);
        ThrowOpenError(ZIP_ER_NOZIP, path);
    }
    return ZipArchive(OpenSource(source, path), nullptr, path);
}

ZipArchive ZipArchive::OpenBuffer(std::string data, const std::string& what)
{
    if (data.empty())
        ThrowOpenError(ZIP_ER_NOZIP, what);
    auto buffer = std::make_unique<std::string>(std::move(data));
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(buffer->data(), buffer->size(), 0, &error);
    if (source == nullptr)
    {
        const int code = zip_error_code_zip(&error);
        zip_error_fini(&error);
        ThrowOpenError(code, what);
    }
    zip_error_fini(&error);
    ::zip* archive = OpenSource(source, what);
    return ZipArchive(archive, std::move(buffer), what);
}

std::vector<std::string> ZipArchive::Names() const
{
    std::vector<std::string> names;
    const zip_int64_t count = zip_get_num_entries(zip_, 0);
    for (zip_int64_t i = 0; i < count; ++i)
    {
        const char* name = zip_get_name(zip_, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        if (name != nullptr)
            names.emplace_back(name);
    }
    return names;
}

boost::optional<std::uint64_t> ZipArchive::Find(const std::string& name, bool ignoreCase) const
{
    if (!ignoreCase)
    {
        const zip_int64_t index = zip_name_locate(zip_, name.c_str(), ZIP_FL_ENC_RAW);
        if (index < 0)
            return boost::none;
        return static_cast<std::uint64_t>(index);
    }
    const zip_int64_t count = zip_get_num_entries(zip_, 0);
    for (zip_int64_t i = 0; i < count; ++i)
    {
        const char* entry = zip_get_name(zip_, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        if (entry != nullptr && EqualIgnoringCase(entry, name))
            return static_cast<std::uint64_t>(i);
    }
    return boost::none;
}

bool ZipArchive::IsEncrypted(std::uint64_t index) const
{
    zip_stat_t stat;
    if (zip_stat_index(zip_, index, 0, &stat) != 0 || (stat.valid & ZIP_STAT_ENCRYPTION_METHOD) == 0)
        return false;
    return stat.encryption_method != ZIP_EM_NONE;
}

std::string ZipArchive::Read(std::uint64_t index, InflateBudget& budget, const char* password) const
{
    const char* rawName = zip_get_name(zip_, index, ZIP_FL_ENC_RAW);
    const std::string name = what_ + ": " + (rawName != nullptr ? rawName : "?");
    const bool encrypted = IsEncrypted(index);
    if (encrypted && password == nullptr)
        throw ProjectError(ProjectErrorKind::PasswordRequired, kPasswordRequiredMessage);

    zip_file_t* file = zip_fopen_index_encrypted(zip_, index, 0, encrypted ? password : nullptr);
    if (file == nullptr)
    {
        const int code = zip_error_code_zip(zip_get_error(zip_));
        zip_error_clear(zip_);
        if (code == ZIP_ER_WRONGPASSWD)
            throw ProjectError(ProjectErrorKind::WrongPassword, kWrongPasswordMessage);
        if (code == ZIP_ER_NOPASSWD)
            throw ProjectError(ProjectErrorKind::PasswordRequired, kPasswordRequiredMessage);
        throw ProjectError(ProjectErrorKind::Corrupt, name + ": cannot be read: " + ErrorText(code));
    }
    std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> closer(file, &zip_fclose);

    std::string data;
    zip_stat_t stat;
    if (zip_stat_index(zip_, index, 0, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE) != 0)
        data.reserve(static_cast<std::size_t>(std::min({stat.size, budget.Remaining(), kMaxReserve})));
    char chunk[kChunk];
    for (;;)
    {
        const zip_int64_t got = zip_fread(file, chunk, sizeof chunk);
        if (got < 0)
        {
            const int code = zip_error_code_zip(zip_file_get_error(file));
            // A wrong password that passes the one- or two-byte check shows as garbage: a
            // failed CRC, HMAC or inflate.
            if (encrypted &&
                (code == ZIP_ER_CRC || code == ZIP_ER_ZLIB || code == ZIP_ER_COMPRESSED_DATA))
                throw ProjectError(ProjectErrorKind::WrongPassword, kWrongPasswordMessage);
            throw ProjectError(ProjectErrorKind::Corrupt, name + ": corrupt entry: " + ErrorText(code));
        }
        if (got == 0)
            break;
        budget.Take(static_cast<std::uint64_t>(got));
        data.append(chunk, static_cast<std::size_t>(got));
    }
    return data;
}
} // namespace detail
} // namespace TavProject
