#include "duplicates/ContentVerifier.h"

#include "duplicates/FileInventory.h"

#include <algorithm>
#include <cstring>

ContentVerifier::ContentVerifier(const Inventory& inventory, std::size_t batchWidth, std::function<bool()> cancelled)
    : m_inventory(inventory)
    , m_batchWidth(std::max<std::size_t>(batchWidth, 1))
    , m_cancelled(std::move(cancelled))
{
}

ContentVerifier::Outcome ContentVerifier::verify(std::vector<std::uint32_t> members)
{
    Outcome outcome;
    while (members.size() >= 2 && !m_cancelled()) {
        Round round = compareWithAnchor(members, outcome);
        if (round.anchorUsable && !round.matched.empty()) {
            VerifiedGroup group;
            group.members.reserve(round.matched.size() + 1);
            group.members.push_back(members.front());
            group.members.insert(group.members.end(), round.matched.begin(), round.matched.end());
            group.hash = round.anchorHash;
            group.size = m_inventory.records[members.front()].size;
            outcome.confirmed.push_back(std::move(group));
        }
        std::sort(round.remaining.begin(), round.remaining.end()); // keep inventory order for the next anchor
        members = std::move(round.remaining);
    }
    return outcome;
}

ContentVerifier::Round ContentVerifier::compareWithAnchor(const std::vector<std::uint32_t>& members, Outcome& outcome)
{
    Round round;
    const FileRecord& anchorRecord = m_inventory.records[members.front()];
    const std::uint64_t size = anchorRecord.size;
    const std::string anchorPath = m_inventory.path(anchorRecord);
    bool anchorHashed = false;

    for (std::size_t start = 1; start < members.size(); start += m_batchWidth) {
        const std::size_t end = std::min(members.size(), start + m_batchWidth);
        const auto giveUpAnchor = [&](std::vector<Member>& active) {
            round.anchorUsable = false;
            round.remaining.insert(round.remaining.end(), round.matched.begin(), round.matched.end());
            round.matched.clear();
            for (const Member& member : active)
                round.remaining.push_back(member.index);
            round.remaining.insert(round.remaining.end(), members.begin() + std::ptrdiff_t(end), members.end());
            return round;
        };

        std::vector<Member> active = openBatch({members.data() + start, end - start}, outcome);
        if (active.empty())
            continue;
        RecordedFile anchor = RecordedFile::open(anchorPath, anchorRecord);
        if (!anchor.file) {
            count(anchor.problem, outcome);
            return giveUpAnchor(active);
        }

        // A file of several chunks is hashed on the background thread while the next chunk is read, with
        // the anchor's chunks alternating between two buffers.
        const bool hashing = !anchorHashed;
        const bool inBackground = hashing && size > chunkSize;
        if (inBackground)
            backgroundHasher().reset();
        else if (hashing)
            m_hasher.reset();
        const auto settleHasher = [&] {
            if (inBackground)
                m_backgroundHasher->waitUntilIdle();
        };
        std::uint64_t offset = 0;
        for (std::size_t chunkIndex = 0; offset < size && !active.empty(); ++chunkIndex) {
            if (m_cancelled()) {
                settleHasher();
                return giveUpAnchor(active);
            }
            const auto chunk = std::size_t(std::min<std::uint64_t>(chunkSize, size - offset));
            std::byte* anchorBuffer = buffer(inBackground ? chunkIndex % 2 : 0);
            const ReadOutcome anchorRead = anchor.file->readAt(offset, {anchorBuffer, chunk});
            outcome.counts.verifyBytesRead += std::int64_t(anchorRead.bytes);
            if (anchorRead.bytes < chunk) {
                settleHasher();
                count(anchorRead.error != 0 ? problemFromError(anchorRead.error) : ReadProblem::changed, outcome);
                return giveUpAnchor(active);
            }
            if (inBackground)
                m_backgroundHasher->add({anchorBuffer, chunk});
            else if (hashing)
                m_hasher.update({anchorBuffer, chunk});
            compareChunk(active, offset, {anchorBuffer, chunk}, round, outcome);
            offset += chunk;
        }
        if (active.empty()) {
            settleHasher();
            continue;
        }
        for (const Member& member : active)
            round.matched.push_back(member.index);
        if (hashing) {
            round.anchorHash = inBackground ? m_backgroundHasher->finish() : m_hasher.finish();
            anchorHashed = true;
        }
    }
    return round;
}

void ContentVerifier::compareChunk(std::vector<Member>& active, std::uint64_t offset,
    std::span<const std::byte> anchorChunk, Round& round, Outcome& outcome)
{
    // The members are read one after the other into one buffer: each is compared with the anchor's chunk
    // before the next is read, so a buffer per member would only hold more memory.
    std::byte* memberBuffer = buffer(2);
    std::erase_if(active, [&](const Member& member) {
        const ReadOutcome read = member.file.readAt(offset, {memberBuffer, anchorChunk.size()});
        outcome.counts.verifyBytesRead += std::int64_t(read.bytes);
        if (read.error != 0) {
            count(problemFromError(read.error), outcome);
            return true;
        }
        if (read.bytes < anchorChunk.size()) {
            count(ReadProblem::changed, outcome);
            return true;
        }
        if (std::memcmp(memberBuffer, anchorChunk.data(), anchorChunk.size()) != 0) {
            round.remaining.push_back(member.index); // differs from this anchor, may equal another member
            return true;
        }
        return false;
    });
}

std::vector<ContentVerifier::Member> ContentVerifier::openBatch(std::span<const std::uint32_t> batch, Outcome& outcome)
{
    std::vector<Member> opened;
    opened.reserve(batch.size());
    for (const std::uint32_t index : batch) {
        const FileRecord& record = m_inventory.records[index];
        RecordedFile member = RecordedFile::open(m_inventory.path(record), record);
        if (!member.file) {
            count(member.problem, outcome);
            continue;
        }
        opened.push_back({index, std::move(*member.file)});
    }
    return opened;
}

std::byte* ContentVerifier::buffer(std::size_t slot)
{
    // Allocated on first use and kept for the worker's life; pages a small file never reaches stay untouched.
    if (m_buffers.size() <= slot)
        m_buffers.resize(slot + 1);
    if (!m_buffers[slot])
        m_buffers[slot] = std::make_unique_for_overwrite<std::byte[]>(chunkSize);
    return m_buffers[slot].get();
}

BackgroundHasher& ContentVerifier::backgroundHasher()
{
    // Started on first use: most scans of small files never need it.
    if (!m_backgroundHasher)
        m_backgroundHasher = std::make_unique<BackgroundHasher>();
    return *m_backgroundHasher;
}

void ContentVerifier::count(ReadProblem problem, Outcome& outcome) const
{
    switch (problem) {
    case ReadProblem::notPresentLocally: ++outcome.counts.datalessAtRead; break;
    case ReadProblem::unreadable: ++outcome.counts.unreadable; break;
    case ReadProblem::changed: ++outcome.changedDuringScan; break;
    case ReadProblem::none: break;
    }
}
