// Reading, checking and replacing whole files, see Flash.h.
#include "Flash.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>

static_assert(std::endian::native == std::endian::little, "the files hold the records as they lie in memory");

namespace
{

constexpr off_t SIZE_LIMIT = 4 << 20; // far above the largest file this library writes

// Eight tables, so that a checksum takes eight bytes at a step.
constexpr auto makeChecksumTables()
{
    std::array<std::array<SD_UINT32, 256>, 8> tables{};
    for (SD_UINT32 byte = 0; byte < 256; ++byte) {
        SD_UINT32 value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
        }
        tables[0][byte] = value;
    }
    for (std::size_t table = 1; table < tables.size(); ++table) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const SD_UINT32 before = tables[table - 1][byte];
            tables[table][byte] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}

constexpr auto CHECKSUM_TABLES = makeChecksumTables();

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

void say(const std::string &line)
{
    (void)std::fprintf(stderr, "libvdsdm: %s\n", line.c_str());
}

bool sameTime(const timespec &one, const timespec &other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

} // namespace

Descriptor::~Descriptor()
{
    if (number_ >= 0) {
        close(number_);
    }
}

bool readAll(int descriptor, std::span<SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeAll(int descriptor, std::span<const SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

SD_UINT32 checksum(std::span<const SD_UINT8> bytes)
{
    const auto &tables = CHECKSUM_TABLES;
    SD_UINT32 value = 0xFFFFFFFF;
    while (bytes.size() >= 8) {
        SD_UINT32 words[2];
        std::memcpy(words, bytes.data(), sizeof words);
        words[0] ^= value;
        value = 0;
        for (std::size_t byte = 0; byte < 4; ++byte) {
            value ^=
                tables[7 - byte][(words[0] >> (8 * byte)) & 0xFF] ^ tables[3 - byte][(words[1] >> (8 * byte)) & 0xFF];
        }
        bytes = bytes.subspan(8);
    }
    for (const SD_UINT8 byte : bytes) {
        value = (value >> 8) ^ tables[0][(value ^ byte) & 0xFF];
    }
    return ~value;
}

FlashFile::FlashFile(std::string path, const FlashHeader &header, bool durable)
    : path_(std::move(path)), header_(header), durable_(durable)
{
}

bool FlashFile::isStill(const Found *found) const
{
    struct stat now {
    };
    if (stat(path_.c_str(), &now) != 0) {
        return found == nullptr && errno == ENOENT;
    }
    // The inode tells replaced files apart; the rest notices a file that somebody else has written into.
    return found != nullptr && now.st_dev == found->identity.st_dev && now.st_ino == found->identity.st_ino
           && now.st_size == found->identity.st_size && sameTime(now.st_mtim, found->identity.st_mtim)
           && sameTime(now.st_ctim, found->identity.st_ctim);
}

std::optional<FlashFile::Found> FlashFile::load() const
{
    Found found;
    // Not blocking, lest a named pipe in the file's place holds us up.
    found.descriptor = Descriptor(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!found.descriptor && errno == ENOENT) {
        return std::nullopt;
    }
    if (!found.descriptor || fstat(found.descriptor.number(), &found.identity) != 0) {
        say("cannot read " + path_ + ": " + std::strerror(errno) + "; make it readable for this user");
        throw Failure{ERR_FLASH_READ};
    }
    if (!S_ISREG(found.identity.st_mode) || found.identity.st_size > SIZE_LIMIT) {
        throw Damaged{"it is not a file of this library"};
    }
    Bytes bytes(static_cast<std::size_t>(found.identity.st_size));
    if (!readAll(found.descriptor.number(), bytes)) {
        say("cannot read " + path_ + " to its end; check the disk");
        throw Failure{ERR_FLASH_READ};
    }

    FlashHeader header{};
    SD_UINT32 sum = 0;
    if (bytes.size() < sizeof header + sizeof sum) {
        throw Damaged{"it ends too early"};
    }
    std::memcpy(&header, bytes.data(), sizeof header);
    std::memcpy(&sum, bytes.data() + bytes.size() - sizeof sum, sizeof sum);
    if (std::memcmp(header.magic, header_.magic, sizeof header.magic) != 0) {
        throw Damaged{"it is not a file of this library"};
    }
    if (bytes.size() - sizeof header - sizeof sum != header.contentsSize) {
        throw Damaged{"its length is not the one it was written with"};
    }
    if (checksum(std::span(bytes).first(bytes.size() - sizeof sum)) != sum) {
        throw Damaged{"its checksum does not match, it is damaged"};
    }
    if (header.formatVersion != header_.formatVersion) {
        throw Damaged{"another version of this library wrote it"};
    }
    if (header.adapterIndex != header_.adapterIndex
        || std::memcmp(header.serialNumber, header_.serialNumber, sizeof header.serialNumber) != 0) {
        throw Damaged{"it belongs to another adapter"};
    }
    found.contents.assign(bytes.begin() + sizeof header, bytes.end() - sizeof sum);
    return found;
}

Descriptor FlashFile::lock() const
{
    const std::string path = path_ + ".lock";
    Descriptor descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!descriptor) {
        failWrite(path);
    }
    while (flock(descriptor.number(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            failWrite(path);
        }
    }
    return descriptor;
}

FlashFile::Found FlashFile::replace(Bytes bytes) const
{
    FlashHeader header = header_;
    header.contentsSize = static_cast<SD_UINT32>(bytes.size() - sizeof header);
    std::memcpy(bytes.data(), &header, sizeof header);
    const SD_UINT32 sum = checksum(bytes);
    const auto *sumBytes = reinterpret_cast<const SD_UINT8 *>(&sum);
    bytes.insert(bytes.end(), sumBytes, sumBytes + sizeof sum);

    // One name for the second file: what a killed writer left there is overwritten by the next one.
    const std::string next = path_ + ".new";
    const Descriptor writer(open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!writer) {
        failWrite(path_);
    }
    // What is kept open afterwards is for reading: an open writer would keep the file system from being made read-only.
    Found found;
    found.descriptor = Descriptor(open(next.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!found.descriptor || !writeAll(writer.number(), bytes) || (durable_ && fdatasync(writer.number()) != 0)
        || rename(next.c_str(), path_.c_str()) != 0 || fstat(writer.number(), &found.identity) != 0) {
        const int error = errno;
        unlink(next.c_str());
        errno = error;
        failWrite(path_);
    }
    if (durable_) {
        // The new name is durable when the folder is. Some file systems have no such call; then nothing more can be
        // done.
        const Descriptor folder(open(folderOf(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder && fsync(folder.number()) != 0 && errno == EIO) {
            failWrite(path_);
        }
    }
    return found;
}

void FlashFile::refuse(const char *reason)
{
    std::string line = path_ + " is refused: " + reason
                       + (durable_ ? "; put a good copy in its place, or remove it to return to the factory settings"
                                   : "; the adapter counts from the beginning");
    if (line != refused_) {
        say(line);
        refused_ = std::move(line);
    }
    require(!durable_, ERR_FLASH_DAMAGED);
}

void FlashFile::failWrite(const std::string &path) const
{
    if (durable_) {
        say("cannot write " + path + ": " + std::strerror(errno) + "; the adapter keeps its old settings");
    }
    throw Failure{ERR_FLASH_WRITE};
}
