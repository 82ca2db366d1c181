// Files that are replaced as a whole: an adapter's settings (its flash) and its counters and logs.
//
// A file is a header, the contents and a checksum over both; every number is little-endian and the same for 32 and 64
// bits. A writer takes the lock, reads the file afresh, writes the changed contents to a second file, makes them
// durable and renames it over the first. Whoever reads therefore always meets one whole state, whether or not a writer
// was killed, and no writer loses what another has written.
#pragma once

#include "Failure.h"

#include <sys/stat.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using Bytes = std::vector<SD_UINT8>;

// The beginning of every file.
struct FlashHeader {
    char magic[8];           // kind of file
    SD_UINT32 formatVersion; // FLASH_FORMAT
    SD_UINT32 adapterIndex;
    SD_UINT8 serialNumber[16]; // of the adapter that the contents belong to
    SD_UINT32 contentsSize;    // bytes between header and checksum
};
static_assert(sizeof(FlashHeader) == 36);

inline constexpr SD_UINT32 FLASH_FORMAT = 1;

// An open file or folder; -1 is none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor();

    int number() const
    {
        return number_;
    }
    explicit operator bool() const
    {
        return number_ >= 0;
    }

private:
    int number_ = -1;
};

// Reads exactly as many bytes; false when that fails or the file ends before.
bool readAll(int descriptor, std::span<SD_UINT8> bytes);
// Writes all bytes; false with errno when that fails.
bool writeAll(int descriptor, std::span<const SD_UINT8> bytes);

// CRC-32 (polynomial 0xEDB88320), as in zlib.
SD_UINT32 checksum(std::span<const SD_UINT8> bytes);

// The contents are not what this library writes. The reason completes the sentence "FILE is refused: ...".
struct Damaged {
    const char *reason;
};

// One file on disk.
class FlashFile
{
public:
    // durable: writes survive a power failure, and a damaged file is an error for its user. Otherwise writes only
    // survive the process, and a damaged file counts as missing.
    FlashFile(std::string path, const FlashHeader &header, bool durable);

    // A file as it was found: open, so that its inode number cannot be given to another file meanwhile.
    struct Found {
        Descriptor descriptor;
        struct stat identity {
        };
        Bytes contents; // without header and checksum
    };

    // Whether the file at the path is the one with this identity; null stands for no file.
    bool isStill(const Found *found) const;
    // The file, or nothing when there is none. Throws Damaged, or ERR_FLASH_READ.
    std::optional<Found> load() const;
    // Keeps all other writers out, in this process and in others, until it goes. Throws ERR_FLASH_WRITE.
    Descriptor lock() const;
    // Replaces the file under the lock. The contents come after room for the header. Throws ERR_FLASH_WRITE; the old
    // file stands then.
    Found replace(Bytes bytes) const;
    // Says on the standard error why a file is refused, once per file, and throws ERR_FLASH_DAMAGED. Files that are not
    // durable are let go with the line alone.
    void refuse(const char *reason);
    // A good file was met: the next bad one gets its line again.
    void accept()
    {
        refused_.clear();
    }

private:
    [[noreturn]] void failWrite(const std::string &path) const;

    std::string path_;
    FlashHeader header_;
    bool durable_;
    std::string refused_; // the last line said, so that it is said once
};

// Writes records one after the other, after room for the header: the size of one, for a list the number too, and the
// bytes.
class RecordWriter
{
public:
    template <class Record>
    void record(const Record &value)
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        number(sizeof value);
        append(&value, sizeof value);
    }
    template <class Record>
    void list(const std::vector<Record> &values, SD_UINT32 /*capacity*/)
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        number(static_cast<SD_UINT32>(values.size()));
        number(sizeof(Record));
        append(values.data(), values.size() * sizeof(Record));
    }
    Bytes bytes = Bytes(sizeof(FlashHeader));

private:
    void number(SD_UINT32 value)
    {
        append(&value, sizeof value);
    }
    void append(const void *data, std::size_t size)
    {
        const auto *first = static_cast<const SD_UINT8 *>(data);
        bytes.insert(bytes.end(), first, first + size);
    }
};

// Reads what RecordWriter wrote. Throws Damaged where sizes or numbers do not fit.
class RecordReader
{
public:
    explicit RecordReader(std::span<const SD_UINT8> bytes) : rest_(bytes) {}
    template <class Record>
    void record(Record &value)
    {
        expect(sizeof value);
        take(&value, sizeof value);
    }
    template <class Record>
    void list(std::vector<Record> &values, SD_UINT32 capacity)
    {
        SD_UINT32 count = 0;
        take(&count, sizeof count);
        if (count > capacity) {
            throw Damaged{"it holds a list that is too long"};
        }
        expect(sizeof(Record));
        values.resize(count);
        take(values.data(), count * sizeof(Record));
    }
    void finish() const
    {
        if (!rest_.empty()) {
            throw Damaged{"it holds more than it should"};
        }
    }

private:
    void expect(SD_UINT32 size)
    {
        SD_UINT32 found = 0;
        take(&found, sizeof found);
        if (found != size) {
            throw Damaged{"its records have another size"};
        }
    }
    void take(void *data, std::size_t size)
    {
        if (size > rest_.size()) {
            throw Damaged{"it ends too early"};
        }
        if (size != 0) {
            std::memcpy(data, rest_.data(), size);
            rest_ = rest_.subspan(size);
        }
    }

    std::span<const SD_UINT8> rest_;
};

// The contents of one file as a value. Contents has a static void transfer(stream, contents), which hands every record
// to stream.record or stream.list and so serves both directions, and void verify() const, which throws Damaged.
template <class Contents>
class Store
{
public:
    Store(FlashFile file, Contents factory)
        : file_(std::move(file)), factory_(std::make_shared<const Contents>(std::move(factory)))
    {
    }

    // What the file holds now, or the factory's contents when there is no file. Waits for no writer. An unchanged file
    // is not read again. Throws ERR_FLASH_DAMAGED, ERR_FLASH_READ.
    std::shared_ptr<const Contents> read()
    {
        const std::lock_guard guard(cacheMutex_);
        if (!current_ || !file_.isStill(found_ ? &*found_ : nullptr)) {
            current_.reset();
            found_.reset();
            load();
        }
        return current_;
    }

    // Has change(contents) applied to the newest contents and writes the result. When change throws nothing is written.
    // Throws as read() does, and ERR_FLASH_WRITE.
    template <class Change>
    void change(Change &&change)
    {
        const std::lock_guard guard(writeMutex_);
        const Descriptor lock = file_.lock();
        const auto next = std::make_shared<Contents>(*read());
        change(*next);
        RecordWriter writer;
        Contents::transfer(writer, *next);
        FlashFile::Found written = file_.replace(std::move(writer.bytes));

        const std::lock_guard cacheGuard(cacheMutex_);
        found_.emplace(std::move(written));
        current_ = next;
    }

private:
    void load()
    {
        try {
            found_ = file_.load();
            if (found_) {
                auto contents = std::make_shared<Contents>();
                RecordReader reader(found_->contents);
                Contents::transfer(reader, *contents);
                reader.finish();
                contents->verify();
                Bytes().swap(found_->contents);
                current_ = std::move(contents);
                file_.accept();
                return;
            }
        } catch (const Damaged &damaged) {
            found_.reset();
            file_.refuse(damaged.reason);
        }
        current_ = factory_;
    }

    FlashFile file_;
    std::shared_ptr<const Contents> factory_;
    std::mutex writeMutex_; // one writer at a time; taken before cacheMutex_
    std::mutex cacheMutex_; // guards what follows, and file_.refuse
    std::optional<FlashFile::Found> found_;
    std::shared_ptr<const Contents> current_;
};
