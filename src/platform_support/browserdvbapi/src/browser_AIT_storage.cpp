// Storing AIT sections.
#include "browser_AIT_storage.h"

#include "browser_log.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagBrowser;

}  // namespace

AITStorage::AITStorage(const std::vector<std::uint8_t>& firstSection) {
    saveAITSection(firstSection);
}

bool AITStorage::saveAITSection(const std::vector<std::uint8_t>& section) {
    AITSection received;
    received.calculateParameters(section.data(), static_cast<int>(section.size()));
    received.dump(false);
    const int lastNumber = received.sectionCount - 1;
    if (static_cast<unsigned int>(received.sectionNumber) >= static_cast<unsigned int>(kSlots)) {
        dump_memory("Too many AIT sections in this channel?", section.data(),
                    static_cast<std::uint32_t>(section.size()), received.sectionNumber);
        return false;
    }
    if (received.version != version) {
        BLOG_TAGGED(blog::kOrdinary, "AIT version changed: %d -> %d\n", version, received.version);
        version = received.version;
        sectionCount = received.sectionCount;
    }
    AITSection& slot = slots[static_cast<std::size_t>(received.sectionNumber)];
    if (slot.valid && slot.crc == received.crc) {
        BLOG_TAGGED(blog::kOrdinary, "No Need to update Section: %d/%d, ver: %d,crc:%08X\n", received.sectionNumber,
                    lastNumber, received.version, received.crc);
        return false;
    }
    BLOG_TAGGED(blog::kOrdinary, "Add AIT Section: %d/%d, ver: %d,crc:%08X\n", received.sectionNumber, lastNumber,
                received.version, received.crc);
    slot.replaceData(section);
    return true;
}

const AITSection& AITStorage::getAITSection(int index) const {
    if (index < kSlots) {
        return slots[static_cast<std::size_t>(index)];
    }
    BLOG_TAGGED(blog::kFailure, "AIT section index over flow.\n");
    return slots[kSlots - 1];
}

}  // namespace velmora::dvbservice
