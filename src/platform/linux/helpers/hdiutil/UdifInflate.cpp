#include "platform/linux/helpers/hdiutil/UdifInflate.h"

#include "platform/linux/helpers/hdiutil/ChunkInflater.h"
#include "platform/linux/helpers/hdiutil/Failure.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <libdeflate.h>
#include <mutex>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <vector>
#include <zlib.h>

namespace join::platform::hdiutil {

namespace {

std::uint32_t crcOf(std::string_view bytes, std::uint32_t before = 0) {
    return ::libdeflate_crc32(before, bytes.data(), bytes.size());
}

/// Returns the checksum of two pieces from those of each, and the size of the second.
std::uint32_t joined(std::uint32_t one, std::uint32_t other, std::uint64_t size) {
    return static_cast<std::uint32_t>(::crc32_combine(one, other, static_cast<z_off_t>(size)));
}

std::uint32_t crcOfZeros(std::uint64_t size) {
    std::uint32_t crc = 0;
    std::uint32_t piece = crcOf(std::string(1, '\0'));
    for (std::uint64_t length = 1; length <= size; length *= 2) {
        if ((size & length) != 0)
            crc = joined(crc, piece, length);
        piece = joined(piece, piece, length);
    }
    return crc;
}

std::uint32_t crcOfPart(const RandomAccess& image, const Extent& part, const Interruption& interruption) {
    constexpr std::uint64_t portion = std::uint64_t{1} << 18;
    std::uint32_t crc = 0;
    for (std::uint64_t done = 0; done < part.size; done += portion) {
        interruption.check();
        crc = crcOf(image.read(part.offset + done, std::min(portion, part.size - done)), crc);
    }
    return crc;
}

void compare(std::uint32_t crc, const std::optional<std::uint32_t>& wanted) {
    if (wanted && crc != *wanted)
        throw Exception("the image is damaged: its checksums are wrong");
}

/// A chunk, and the checksums found.
struct Work {
    const UdifChunk* chunk;
    std::uint32_t contents = 0;
    std::uint32_t stored = 0;
};

class Inflation {
public:
    Inflation(const RandomAccess& image, const UdifTable& table, const Extent& part, const NewImage& kept)
        : image_(image), part_(part), kept_(kept) {
        for (const UdifChunk& chunk : table.chunks)
            work_.push_back({&chunk});
    }
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;
    ~Inflation() { next_ = work_.size(); } // the threads end

    /// The threads leave all signals to the interruption: they inherit what it has blocked.
    void await(const Interruption& interruption) {
        if (!ended_)
            fail("the system has no descriptors left");
        const std::size_t number = std::clamp(std::thread::hardware_concurrency(), 1U, maximumThreads);
        try {
            while (workers_.size() < number)
                workers_.emplace_back([this] { run(); });
        } catch (const std::system_error&) {
            if (workers_.empty())
                throw Exception("no thread can be started");
        }
        for (std::size_t n = 0; n < workers_.size(); ++n) {
            interruption.awaitReadable(ended_.get());
            eventfd_t one = 0;
            ::eventfd_read(ended_.get(), &one);
        }
        workers_.clear();
        if (failure_)
            std::rethrow_exception(failure_);
    }

    /// Compares the checksum of each partition.
    void compareContents(const std::vector<UdifPartition>& partitions) const {
        auto work = work_.begin();
        std::uint64_t end = 0;
        for (const UdifPartition& partition : partitions) {
            std::uint32_t crc = 0;
            end += partition.size;
            for (; work != work_.end() && work->chunk->place.offset < end; ++work) {
                if (work->chunk->kind != ChunkKind::unused)
                    crc = joined(crc, work->contents, work->chunk->place.size);
            }
            compare(crc, partition.crc);
        }
    }

    /// Compares the checksum of the chunks as stored, called last. Reads only what lies between them.
    void compareStored(const UdifTrailer& trailer, const Interruption& interruption) {
        std::ranges::sort(work_, {}, [](const Work& work) { return work.chunk->stored.offset; });
        std::uint32_t crc = 0;
        std::uint64_t place = trailer.data.offset;
        const auto readUpTo = [&](std::uint64_t end) {
            crc = joined(crc, crcOfPart(image_, {place, end - place}, interruption), end - place);
        };
        for (const Work& work : work_) {
            const Extent& stored = work.chunk->stored;
            if (!isStored(work.chunk->kind))
                continue;
            readUpTo(stored.offset);
            crc = joined(crc, work.stored, stored.size);
            place = stored.offset + stored.size;
        }
        readUpTo(trailer.data.offset + trailer.data.size);
        compare(crc, trailer.dataCrc);
    }

private:
    static constexpr unsigned maximumThreads = 16;

    void run() noexcept {
        try {
            ChunkInflater inflater;
            for (std::size_t n = next_++; n < work_.size(); n = next_++)
                inflate(work_[n], inflater);
        } catch (...) {
            next_ = work_.size();
            const std::lock_guard lock(mutex_);
            failure_ = std::current_exception();
        }
        ::eventfd_write(ended_.get(), 1);
    }

    void inflate(Work& work, ChunkInflater& inflater) const {
        const UdifChunk& chunk = *work.chunk;
        if (chunk.kind == ChunkKind::zeros)
            work.contents = crcOfZeros(chunk.place.size);
        if (!isStored(chunk.kind))
            return;
        const std::string stored = image_.read(chunk.stored.offset, chunk.stored.size);
        const std::string_view contents =
            chunk.kind == ChunkKind::plain ? stored : inflater.inflate(chunk.kind, stored, chunk.place.size);
        keep(chunk, contents);
        work.stored = crcOf(stored);
        work.contents = crcOf(contents);
    }

    void keep(const UdifChunk& chunk, std::string_view contents) const {
        if (chunk.place.offset - part_.offset < part_.size) // unsigned
            kept_.write(chunk.place.offset - part_.offset, contents);
    }

    const RandomAccess& image_;
    const Extent part_;
    const NewImage& kept_;
    std::vector<Work> work_;
    std::atomic<std::size_t> next_ = 0; ///< what no thread has begun
    std::mutex mutex_;                  ///< protects failure_
    std::exception_ptr failure_;
    const Descriptor ended_{::eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)}; ///< counts threads that are done
    std::vector<std::jthread> workers_; ///< last, to be destroyed first: they use all of the others
};

} // namespace

ImageFile inflateUdif(const RandomAccess& image, const UdifTrailer& trailer, const UdifTable& table,
                      const Extent& part, const std::string& folder, const Interruption& interruption) {
    NewImage kept(folder);
    Inflation inflation(image, table, part, kept);
    inflation.await(interruption);
    inflation.compareContents(table.partitions);
    inflation.compareStored(trailer, interruption);
    return kept.finish(part.size);
}

void compareStored(const RandomAccess& image, const UdifTrailer& trailer, const Interruption& interruption) {
    if (trailer.dataCrc)
        compare(crcOfPart(image, trailer.data, interruption), trailer.dataCrc);
}

} // namespace join::platform::hdiutil
