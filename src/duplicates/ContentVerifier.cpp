#include "duplicates/ContentVerifier.h"

#include "duplicates/FileInventory.h"

#include <algorithm>
#include <cstring>

ContentVerifier::ContentVerifier(
    const Inventory& inventory, std::size_t batchWidth, std::function<bool()> cancelled, SideWork sideWork)
    : m_inventory(inventory)
    , m_batchWidth(std::max<std::size_t>(batchWidth, 1))
    , m_cancelled(std::move(cancelled))
    , m_sideWork(std::move(sideWork))
    , m_memberBuffer(std::make_unique_for_overwrite<std::byte[]>(memberPiece))
    , m_sideAnchorBuffer(std::make_unique_for_overwrite<std::byte[]>(sideWorkSize))
{
}

ContentVerifier::Outcome ContentVerifier::verify(Group members)
{
    Outcome outcome;
    compareGroup(std::move(members), Hashing::behind, outcome);
    collectHashed(false, outcome.confirmed);
    return outcome;
}

bool ContentVerifier::compareSideGroup(Outcome& outcome)
{
    Group* group = m_sideWork ? m_sideWork() : nullptr;
    if (!group)
        return false;
    compareGroup(std::move(*group), Hashing::alongside, outcome);
    return true;
}

void ContentVerifier::compareGroup(Group members, Hashing hashing, Outcome& outcome)
{
    ++outcome.groupsDone;
    while (members.size() >= 2 && !m_cancelled()) {
        Round round = compareWithAnchor(members, hashing, outcome);
        if (round.anchorUsable && !round.matched.empty()) {
            VerifiedGroup group;
            group.members.reserve(round.matched.size() + 1);
            group.members.push_back(members.front());
            group.members.insert(group.members.end(), round.matched.begin(), round.matched.end());
            group.size = m_inventory.records[members.front()].size;
            group.hash = round.anchorHash;
            if (hashing == Hashing::alongside)
                outcome.confirmed.push_back(std::move(group));
            else
                m_waiting.push_back({std::move(group), round.anchorDigest});
        }
        std::sort(round.remaining.begin(), round.remaining.end()); // keep inventory order for the next anchor
        members = std::move(round.remaining);
    }
}

ContentVerifier::Outcome ContentVerifier::finish()
{
    Outcome outcome;
    collectHashed(true, outcome.confirmed);
    return outcome;
}

void ContentVerifier::collectHashed(bool waitForAll, std::vector<VerifiedGroup>& into)
{
    // Digests arrive in ticket order, as the groups wait. A digest whose anchor was given up in a later
    // batch has no group and is skipped.
    for (const auto& [ticket, hash] : m_anchorHasher.finishedDigests(waitForAll)) {
        if (m_waiting.empty() || m_waiting.front().digest != ticket)
            continue;
        m_waiting.front().group.hash = hash;
        into.push_back(std::move(m_waiting.front().group));
        m_waiting.pop_front();
    }
}

ContentVerifier::Round ContentVerifier::compareWithAnchor(const Group& members, Hashing hashing, Outcome& outcome)
{
    Round round;
    const FileRecord& anchorRecord = m_inventory.records[members.front()];
    const std::uint64_t size = anchorRecord.size;
    const std::string anchorPath = m_inventory.path(anchorRecord);
    const bool behind = hashing == Hashing::behind;
    const auto whileRingFull = [&] { return compareSideGroup(outcome); };
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
            countLeftOut(anchor.problem, outcome.counts);
            return giveUpAnchor(active);
        }

        // The anchor is hashed along with the first batch that it matches to the end; a digest left
        // unfinished (every member of the batch differed) is simply never asked for.
        const bool hashingNow = !anchorHashed;
        AnchorHasher::Ticket digest = 0;
        if (hashingNow && behind)
            digest = m_anchorHasher.startDigest();
        else if (hashingNow)
            m_sideHasher.reset();
        for (std::uint64_t offset = 0; offset < size && !active.empty();) {
            if (m_cancelled())
                return giveUpAnchor(active);
            const auto length = std::size_t(std::min<std::uint64_t>(behind ? chunkSize : sideWorkSize, size - offset));
            const std::span<std::byte> chunk
                = behind ? m_anchorHasher.space(length, whileRingFull) : std::span(m_sideAnchorBuffer.get(), length);
            const ReadOutcome anchorRead = anchor.file->readAt(offset, chunk);
            outcome.counts.verifyBytesRead += std::int64_t(anchorRead.bytes);
            if (anchorRead.bytes < length) {
                if (behind)
                    m_anchorHasher.release(chunk);
                countLeftOut(
                    anchorRead.error != 0 ? problemFromError(anchorRead.error) : ReadProblem::changed, outcome.counts);
                return giveUpAnchor(active);
            }
            // Handed over first, so the chunk is hashed while the members are read and compared with it.
            if (behind && hashingNow)
                m_anchorHasher.hash(chunk);
            else if (behind)
                m_anchorHasher.release(chunk); // only this thread writes to the ring: the bytes stay put
            else if (hashingNow)
                m_sideHasher.update(chunk);
            compareChunk(active, offset, chunk, round, outcome);
            offset += length;
        }
        if (active.empty())
            continue;
        for (const Member& member : active)
            round.matched.push_back(member.index);
        if (hashingNow && behind) {
            m_anchorHasher.finishDigest();
            round.anchorDigest = digest;
        } else if (hashingNow) {
            round.anchorHash = m_sideHasher.finish();
        }
        anchorHashed = true;
    }
    return round;
}

void ContentVerifier::compareChunk(std::vector<Member>& active, std::uint64_t offset,
    std::span<const std::byte> anchorChunk, Round& round, Outcome& outcome)
{
    // The members are read one after the other into one buffer, each compared with the anchor's chunk
    // before the next is read, so a buffer per member would only hold more memory. A member's span is read
    // a piece at a time, which keeps that buffer small and stops reading a member at its first difference.
    std::byte* memberBuffer = m_memberBuffer.get();
    std::erase_if(active, [&](const Member& member) {
        for (std::size_t done = 0; done < anchorChunk.size();) {
            const std::size_t length = std::min(memberPiece, anchorChunk.size() - done);
            const ReadOutcome read = member.file.readAt(offset + done, {memberBuffer, length});
            outcome.counts.verifyBytesRead += std::int64_t(read.bytes);
            if (read.error != 0) {
                countLeftOut(problemFromError(read.error), outcome.counts);
                return true;
            }
            if (read.bytes < length) {
                countLeftOut(ReadProblem::changed, outcome.counts);
                return true;
            }
            if (std::memcmp(memberBuffer, anchorChunk.data() + done, length) != 0) {
                round.remaining.push_back(member.index); // differs from this anchor, may equal another member
                return true;
            }
            done += length;
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
            countLeftOut(member.problem, outcome.counts);
            continue;
        }
        opened.push_back({index, std::move(*member.file)});
    }
    return opened;
}
