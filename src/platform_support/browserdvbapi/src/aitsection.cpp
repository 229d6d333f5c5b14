// Reads AIT section records and writes them to the log.
#include "aitsection.h"

#include <algorithm>
#include <new>

#include "browser_log.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagBrowser;
constexpr int kShortestSection = 8;

}  // namespace

AITSection::AITSection() {
    BLOG_TRACE(__PRETTY_FUNCTION__);
}

AITSection::AITSection(const AITSection& other)
    : data(other.data),
      version(other.version),
      sectionNumber(other.sectionNumber),
      sectionCount(other.sectionCount),
      crc(other.crc),
      valid(other.valid) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
}

AITSection::AITSection(std::vector<std::uint8_t>& bytes) : data(bytes) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    parse();
}

AITSection::AITSection(const std::uint8_t* bytes, int length) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    if (length < 0) {
        throw std::bad_alloc();  // no machine has as much memory as a negative length asks for
    }
    data.assign(bytes, bytes + length);
    parse();
}

AITSection& AITSection::operator=(const AITSection& other) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    if (this != &other) {
        data = other.data;
        version = other.version;
        sectionNumber = other.sectionNumber;
        sectionCount = other.sectionCount;
        crc = other.crc;
        valid = other.valid;
    }
    return *this;
}

AITSection::~AITSection() {
    BLOG_TRACE(__PRETTY_FUNCTION__);
}

void AITSection::calculateParameters(const std::uint8_t* bytes, int length) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    if (length < kShortestSection) {
        return;
    }
    version = (bytes[5] >> 1) & 0x1F;
    sectionNumber = bytes[6];
    sectionCount = bytes[7] + 1;
    const std::uint8_t* const last = bytes + length - 4;
    crc = static_cast<std::uint32_t>(last[0]) << 24U | static_cast<std::uint32_t>(last[1]) << 16U |
          static_cast<std::uint32_t>(last[2]) << 8U | static_cast<std::uint32_t>(last[3]);
}

void AITSection::parse() {
    valid = false;
    sectionCount = 0;
    calculateParameters(data.data(), static_cast<int>(data.size()));
    valid = sectionCount != 0;
}

void AITSection::replaceData(std::vector<std::uint8_t> bytes) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    data.swap(bytes);
    parse();
}

void AITSection::replaceData(const std::uint8_t* bytes, int length) {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    data.resize(static_cast<std::size_t>(length));
    std::copy(bytes, bytes + length, data.begin());
    parse();
}

void AITSection::dump(bool withData) const {
    BLOG_TRACE(__PRETTY_FUNCTION__);
    BLOG_TAGGED(blog::kOrdinary, "DumpAITSection: ver:%d,sn:%d/%d,crc:%08X(valid:%d)\n", version, sectionNumber,
                sectionCount - 1, crc, static_cast<int>(valid));
    if (!withData) {
        return;
    }
    if (valid && !data.empty()) {
        dump_memory("DumpAITSection: ", data.data(), static_cast<std::uint32_t>(data.size()), static_cast<int>(valid));
    } else {
        BLOG_TAGGED(blog::kOrdinary, "DumpAITSection:  no data.\n");
    }
}

}  // namespace velmora::dvbservice
