// CarouselMounts: the object carousels of the presented service that browsers have asked for, as folders that follow
// the broadcast. Carousels are read while a browser wants one. A mount ends when its service or its browser goes, or
// its component leaves the PMT; with the last mount of a carousel its folder is removed.
// Threads: the loop's.
// Blocks:  only the destructor, as TreeFolders does.
// Fails:   the answer says why a carousel is not mounted; log lines say what is missing in one.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "followed_carousels.h"
#include "multiplexes.h"
#include "tree_folders.h"

namespace dtvservice {

class CarouselMounts {
public:
    using Peer = std::uint32_t;
    /// Of a browser, with the requests that wait for an answer.
    static constexpr std::size_t kMostMounts = 64;

    struct Target {
        std::uint16_t onid;
        std::uint16_t tsid;
        std::uint16_t sid;
        std::int16_t componentTag;  ///< of the stream on which the carousel begins; negative: the first complete one
    };
    enum class Result : std::uint16_t {
        done = 0,
        noSuchComponent = 1,  ///< or another service is presented
        noCarousel = 2,
        notComplete = 3,
        tooMuch = 4,     ///< the browser has as many mounts as it may have, or the files do not fit
        notWritten = 5,  ///< the file system refuses
    };
    /// `path`: of the folder, if done.
    using Answer = std::function<void(Result result, const std::string& path)>;
    /// Gets what is worth a line in the log.
    enum class Line { ordinary, warning };
    using Tell = std::function<void(Line line, const std::string& text)>;

    /// How long a request waits.
    struct Patience {
        std::chrono::milliseconds forCarousel = std::chrono::seconds(10);  ///< to begin
        std::chrono::milliseconds forTree = std::chrono::minutes(10);      ///< to be complete
        std::chrono::milliseconds betweenLooks = std::chrono::seconds(1);
    };

    /// The loop must outlive this object, and run no task after this object ends.
    CarouselMounts(EventLoop& newLoop, TreeFolders& newFolders, Tell newTell)
        : CarouselMounts(newLoop, newFolders, std::move(newTell), Patience()) {}
    CarouselMounts(EventLoop& newLoop, TreeFolders& newFolders, Tell newTell, Patience newPatience)
        : loop(newLoop), folders(newFolders), say(std::move(newTell)), patience(newPatience) {}
    CarouselMounts(const CarouselMounts&) = delete;
    CarouselMounts& operator=(const CarouselMounts&) = delete;
    ~CarouselMounts() = default;

    /// What is presented, with its PMT. Mounts of another service end. The demultiplexer must outlive this object.
    void follow(broadcast::Demux& newDemux, const broadcast::Channel& channel, const si::Pmt& newPmt,
                broadcast::FollowedCarousels::PmtOf newPmtOf);
    /// Nothing is presented, or the service's PMT is unknown.
    void rest();
    /// A PMT of another service of the multiplex.
    void setOtherPmt(const si::Pmt& otherPmt);

    void add(Peer browser, const Target& target, Answer answer);
    void forget(Peer browser);

    /// For the operator: the oldest mounts, with the requests that wait for an answer.
    nlohmann::json describe(std::size_t most) const;

private:
    using Clock = EventLoop::Clock;

    struct Mount {
        Peer browser;
        Target target;
        Answer answer;  // null after the answer
        Clock::time_point askedAt;
        std::optional<std::uint16_t> pid;  // of the carousel, once it is known
    };
    /// A carousel's folder.
    struct Folder {
        std::string name;
        std::string path = {};                              // empty until there is a tree
        std::weak_ptr<const si::CarouselTree> newest = {};  // that was given away to be written
        bool isBeingWritten = false;
        std::uint64_t versions = 0;  // that have been in it
    };

    bool isPresented(const Target& target) const;
    std::optional<std::uint16_t> pidOf(const Target& target) const;
    std::optional<Result> refusalOf(Peer browser, const Target& target) const;
    void read();
    void onNews(const broadcast::FollowedCarousels::News& news);
    void showAll();
    void show(std::uint16_t pid, si::ObjectCarousel& carousel);
    void onShown(std::uint16_t pid, const std::string& name, const TreeFolders::Shown& shown);
    void answerWhatIsShown();
    bool isWanted(std::uint16_t pid) const;
    void bindToFirstComplete();
    bool hasBegun(const Mount& mount);
    std::optional<Result> resultInTime(const Mount& mount, Clock::time_point now);
    void lookLater();
    /// Ends the mounts for which the function gives a result, and answers those that wait with it.
    template <typename ResultOf>
    void endWhere(ResultOf resultOf);
    void sweep();

    EventLoop& loop;
    TreeFolders& folders;
    const Tell say;
    const Patience patience;
    broadcast::Demux* demux = nullptr;
    broadcast::FollowedCarousels::PmtOf pmtOf;
    broadcast::Channel presented;
    std::optional<si::Pmt> pmt;
    std::list<Mount> mounts;
    std::map<std::uint16_t, Folder> shown;  // by the carousel's PID
    std::uint64_t lastFolder = 0;
    bool looksLater = false;
    std::unique_ptr<broadcast::FollowedCarousels> carousels;  // null while there is no mount
};

}  // namespace dtvservice
