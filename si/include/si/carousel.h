// ObjectCarousel: puts one object carousel together from its sections (ISO/IEC 13818-6, clauses 7.3 and 11.3; TR 101
// 202; TS 102 809, Annex B). The caller filters the sections of the streams in associationTags(), with a right CRC_32,
// and passes them on.
//
// A new version of the carousel is read beside the old one, which stays whole until the new one is: a tree never has
// objects of two versions. That needs memory for both. What a tree names is then there in all its modules, and every
// message that lists them, and the one that names the gateway, has come again since the last change of any of them: the
// messages change together, but they come one after the other.
//
// Memory: at most kMostBytes for blocks, modules and the objects in them, old trees that the caller keeps included, and
// four megabytes for the tables of lists and modules. A section takes time in proportion to its size; only the modules
// that it completes are uncompressed, at most kMostCompressed times their size.
// Threads: one for a carousel; its trees belong to any.
// Blocks:  never.
// Fails:   news say what is dropped and left out, and what is wrong but does no harm.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "si/carousel_tree.h"
#include "si/download.h"

namespace si {

/// What a section has changed.
struct CarouselNews {
    enum class Kind {
        gateway,  ///< the service gateway is known, or another one
        list,     ///< a DownloadInfoIndication is new or has changed
        module,   ///< a module is whole
        dropped,  ///< what has come of a module, because it does not fit its list; it is read anew
        leftOut,  ///< modules that would exceed a limit
        tree,     ///< tree() is a new one, and complete
        warning,
    };
    Kind kind;
    std::uint16_t moduleId;  ///< of module, dropped, leftOut
    std::string text;        ///< for people, for example "module 3, version 1: block 7 has 100 bytes, not 4066"
};

/// What is held in all.
using ByteSum = std::shared_ptr<std::atomic<std::size_t>>;

class ObjectCarousel {
public:
    static constexpr std::size_t kMostBytes = std::size_t{128} << 20U;
    static constexpr std::size_t kLargestModule = std::size_t{32} << 20U;  // broadcast or uncompressed
    static constexpr std::uint32_t kMostCompressed = 100;                  // times
    static constexpr std::size_t kMostModules = 4096;
    static constexpr std::size_t kMostLists = 128;
    static constexpr std::size_t kMostTags = 64;

    /// Carousels with the same sum share the memory.
    explicit ObjectCarousel(std::size_t newMostBytes = kMostBytes,
                            ByteSum newSum = std::make_shared<std::atomic<std::size_t>>(0));
    ObjectCarousel(ObjectCarousel&&) noexcept;
    ~ObjectCarousel();

    enum class From {
        root,   ///< the stream with the DownloadServerInitiate
        other,  ///< another stream in associationTags()
    };
    std::vector<CarouselNews> onSection(From stream, Bytes section);

    /// The newest complete tree; until there is one, what has come so far.
    std::shared_ptr<const CarouselTree> tree();
    /// The streams that the messages name, beside the root's.
    const std::set<std::uint16_t>& associationTags() const { return tags; }
    /// Of the service gateway.
    std::optional<std::uint32_t> carouselId() const;

    struct ModuleState {
        std::uint16_t id;
        std::uint8_t version;
        std::size_t size;  ///< as broadcast
        std::size_t blocks;
        std::size_t blocksHere;
        bool isLeftOut;
    };
    /// The modules of the version that is being read, by number.
    std::vector<ModuleState> modules() const;
    /// The bytes that count against the limit.
    std::size_t heldBytes() const;

private:
    struct List {
        std::vector<DownloadInfo::Module> modules;
        std::uint16_t blockSize = 0;
        std::uint64_t heardAt = 0;  // the number of changes when it came last
    };
    struct Reading;
    using News = std::vector<CarouselNews>;

    void onGateway(const ObjectReference& newGateway, News& news);
    void onInfo(const DownloadInfo& info, News& news);
    bool isOurs(const DownloadInfo& info);
    void takeList(std::uint16_t identification, const DownloadInfo& info, News& news);
    void takeModule(std::uint16_t identification, std::uint16_t blockSize, const DownloadInfo::Module& listed,
                    News& news);
    void forgetModule(std::uint16_t id, std::uint16_t identification);
    void forgetOldestList();
    void onBlock(const DownloadBlock& block, News& news);
    void finish(Reading& reading, News& news);
    void drop(Reading& reading, const std::string& why, News& news);
    void leaveOut(Reading& reading, const std::string& why, News& news);
    void settle(std::uint16_t module);
    void addTag(std::uint16_t tag);

    void lookSoon(News& news);
    void look();
    void publishIfConfirmed(News& news);
    bool isConfirmed(std::uint16_t identification) const;
    void retryLeftOut();

    std::size_t mostBytes;
    ByteSum sum;
    CarouselTree forming;
    std::shared_ptr<const CarouselTree> published;
    std::shared_ptr<const CarouselTree> partial;  // what tree() has made of forming; null if that has changed
    std::optional<std::uint32_t> downloadId;
    std::map<std::uint16_t, List> lists;                         // by identification
    std::map<std::uint16_t, std::unique_ptr<Reading>> readings;  // one for each module in forming
    std::set<std::uint16_t> tags;
    bool hasWarnedOfNumber = false;

    std::uint64_t changes = 0;  // of the gateway and the lists
    std::uint64_t gatewayHeardAt = 0;
    std::set<std::uint16_t> awaited;      // modules without which the tree is not complete
    std::set<std::uint16_t> neededLists;  // of the modules that the tree reaches
    bool awaitsConfirmation = false;      // all is here, but not every message has come again
    bool isStale = false;                 // a look has to follow
    std::size_t workOfLook = 0;           // entries and modules that the last look went through
    std::size_t received = 0;             // bytes of sections since then
};

}  // namespace si
