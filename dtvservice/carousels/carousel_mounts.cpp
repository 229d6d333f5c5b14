// Follows carousels, and answers when their trees are written.
#include "carousel_mounts.h"

#include <algorithm>
#include <utility>

#include "line_limits.h"

namespace dtvservice {

using si::CarouselNews;
using si::TreeWritten;

namespace {

std::string textOf(const TreeWritten& written) {
    return std::to_string(written.files) + " files in " + std::to_string(written.folders) + " folders" +
           (written.leftOut == 0 ? "" : ", without " + std::to_string(written.leftOut) + " objects that are not there");
}

std::string whyNot(const TreeWritten& written) {
    return written.how == TreeWritten::How::tooLarge ? "its files need too much room" : shownName(written.error);
}

}  // namespace

void CarouselMounts::follow(broadcast::Demux& newDemux, const broadcast::Channel& channel, const si::Pmt& newPmt,
                            broadcast::FollowedCarousels::PmtOf newPmtOf) {
    if (demux != &newDemux) {
        rest();
    }
    demux = &newDemux;
    pmtOf = std::move(newPmtOf);
    presented = channel;
    pmt = newPmt;
    if (carousels) {
        carousels->setPmt(*pmt);
    }
    endWhere([this](const Mount& mount) {
        const bool isThere = isPresented(mount.target) &&
                             (mount.target.componentTag < 0
                                  ? !mount.pid || carousels->carousels().count(*mount.pid) != 0
                                  : mount.pid == pidOf(mount.target) && carousels->carousels().count(*mount.pid) != 0);
        return isThere ? std::nullopt : std::optional(Result::noSuchComponent);
    });
}

void CarouselMounts::rest() {
    pmt.reset();
    endWhere([](const Mount&) { return std::optional(Result::noSuchComponent); });
}

void CarouselMounts::setOtherPmt(const si::Pmt& otherPmt) {
    if (carousels) {
        carousels->setOtherPmt(otherPmt);
    }
}

bool CarouselMounts::isPresented(const Target& target) const {
    return pmt && pmt->serviceId == target.sid && matches(presented, {target.onid, target.tsid, target.sid});
}

std::optional<std::uint16_t> CarouselMounts::pidOf(const Target& target) const {
    const auto isIt = [&target](const si::Pmt::Stream& stream) {
        return si::componentTag(stream) == target.componentTag;
    };
    const auto stream = std::find_if(pmt->streams.begin(), pmt->streams.end(), isIt);
    return target.componentTag < 0 || stream == pmt->streams.end() ? std::nullopt : std::optional(stream->pid);
}

/// Why the request is refused at once.
std::optional<CarouselMounts::Result> CarouselMounts::refusalOf(Peer browser, const Target& target) const {
    if (!isPresented(target) || (target.componentTag >= 0 && !pidOf(target))) {
        return Result::noSuchComponent;
    }
    const auto theirs =
        std::count_if(mounts.begin(), mounts.end(), [browser](const Mount& mount) { return mount.browser == browser; });
    return static_cast<std::size_t>(theirs) < kMostMounts ? std::nullopt : std::optional(Result::tooMuch);
}

void CarouselMounts::add(Peer browser, const Target& target, Answer answer) {
    if (const std::optional<Result> refusal = refusalOf(browser, target)) {
        answer(*refusal, "");
        return;
    }
    read();
    const std::optional<std::uint16_t> pid = pidOf(target);
    const bool mayBe = pid ? carousels->carousels().count(*pid) != 0 : !carousels->carousels().empty();
    if (!mayBe) {
        answer(Result::noCarousel, "");
        sweep();
        return;
    }
    mounts.push_back({browser, target, std::move(answer), Clock::now(), pid});
    showAll();
    answerWhatIsShown();
    lookLater();
}

void CarouselMounts::read() {
    if (!carousels) {
        carousels = std::make_unique<broadcast::FollowedCarousels>(
            *demux, pmtOf, [this](const broadcast::FollowedCarousels::News& news) { onNews(news); });
        carousels->setPmt(*pmt);
    }
}

void CarouselMounts::onNews(const broadcast::FollowedCarousels::News& news) {
    bool isNewTree = false;
    for (const auto& [pid, each] : news) {
        isNewTree = isNewTree || each.kind == CarouselNews::Kind::tree;
        if (each.kind == CarouselNews::Kind::dropped || each.kind == CarouselNews::Kind::leftOut ||
            each.kind == CarouselNews::Kind::warning) {
            say(Line::warning, "carousel on PID " + std::to_string(pid) + ": " + each.text);
        }
    }
    if (isNewTree) {
        showAll();
    }
}

void CarouselMounts::showAll() {
    bindToFirstComplete();
    for (auto& [pid, carousel] : carousels->carousels()) {
        if (isWanted(pid)) {
            show(pid, carousel);
        }
    }
}

/// While a tree is written, newer ones only replace each other in the carousel.
void CarouselMounts::show(std::uint16_t pid, si::ObjectCarousel& carousel) {
    Folder& folder = shown[pid];
    const std::shared_ptr<const si::CarouselTree> tree = carousel.tree();
    if (!tree->isComplete() || folder.isBeingWritten || folder.newest.lock() == tree) {
        return;
    }
    if (folder.name.empty()) {
        // Of its own, because the one before may still be in removal.
        folder.name = "service-" + std::to_string(pmt->serviceId) + "-pid-" + std::to_string(pid) + "-" +
                      std::to_string(++lastFolder);
    }
    folder.newest = tree;
    folder.isBeingWritten = true;
    folders.show(folder.name, tree,
                 [this, pid, name = folder.name](const TreeFolders::Shown& written) { onShown(pid, name, written); });
}

void CarouselMounts::onShown(std::uint16_t pid, const std::string& name, const TreeFolders::Shown& now) {
    const auto found = shown.find(pid);
    if (found == shown.end() || found->second.name != name) {
        return;  // removed meanwhile
    }
    Folder& folder = found->second;
    folder.isBeingWritten = false;
    const std::string carousel = "the carousel on PID " + std::to_string(pid);
    if (now.written.how == TreeWritten::How::whole) {
        say(Line::ordinary,
            carousel + (folder.path.empty() ? " is mounted: " : " has changed: ") + textOf(now.written));
        folder.path = now.path;
        ++folder.versions;
    } else {
        say(Line::warning,
            carousel + (folder.path.empty() ? " is not mounted: " : " stays as it was: ") + whyNot(now.written));
        const bool isKept = !folder.path.empty();
        const Result result = now.written.how == TreeWritten::How::tooLarge ? Result::tooMuch : Result::notWritten;
        endWhere([=](const Mount& mount) { return isKept || mount.pid != pid ? std::nullopt : std::optional(result); });
    }
    answerWhatIsShown();
    if (carousels) {
        showAll();
    }
}

void CarouselMounts::answerWhatIsShown() {
    for (Mount& mount : mounts) {
        const auto folder = mount.pid && mount.answer ? shown.find(*mount.pid) : shown.end();
        if (folder != shown.end() && !folder->second.path.empty()) {
            std::exchange(mount.answer, nullptr)(Result::done, folder->second.path);
        }
    }
}

bool CarouselMounts::isWanted(std::uint16_t pid) const {
    return std::any_of(mounts.begin(), mounts.end(), [pid](const Mount& mount) { return mount.pid == pid; });
}

/// For the requests that leave the choice to the service.
void CarouselMounts::bindToFirstComplete() {
    auto& all = carousels->carousels();
    const auto complete =
        std::find_if(all.begin(), all.end(), [](auto& each) { return each.second.tree()->isComplete(); });
    for (Mount& mount : mounts) {
        if (complete != all.end() && !mount.pid) {
            mount.pid = complete->first;
        }
    }
}

bool CarouselMounts::hasBegun(const Mount& mount) {
    auto& all = carousels->carousels();
    return std::any_of(all.begin(), all.end(), [&mount](const auto& each) {
        return each.second.carouselId() && mount.pid.value_or(each.first) == each.first;
    });
}

std::optional<CarouselMounts::Result> CarouselMounts::resultInTime(const Mount& mount, Clock::time_point now) {
    const auto folder = mount.pid ? shown.find(*mount.pid) : shown.end();
    if (!mount.answer || (folder != shown.end() && folder->second.isBeingWritten)) {
        return std::nullopt;
    }
    if (now - mount.askedAt >= patience.forCarousel && !hasBegun(mount)) {
        return Result::noCarousel;
    }
    return now - mount.askedAt >= patience.forTree ? std::optional(Result::notComplete) : std::nullopt;
}

/// One task for all requests that wait.
void CarouselMounts::lookLater() {
    const bool isOneWaiting =
        std::any_of(mounts.begin(), mounts.end(), [](const Mount& mount) { return mount.answer != nullptr; });
    if (looksLater || !isOneWaiting) {
        return;
    }
    looksLater = true;
    loop.postAt(Clock::now() + patience.betweenLooks, [this] {
        looksLater = false;
        const auto now = Clock::now();
        endWhere([this, now](const Mount& mount) { return resultInTime(mount, now); });
        lookLater();
    });
}

void CarouselMounts::forget(Peer browser) {
    mounts.remove_if([browser](const Mount& mount) { return mount.browser == browser; });
    sweep();
}

template <typename ResultOf>
void CarouselMounts::endWhere(ResultOf resultOf) {
    for (auto mount = mounts.begin(); mount != mounts.end();) {
        const std::optional<Result> result = resultOf(*mount);
        if (result && mount->answer) {
            mount->answer(*result, "");
        }
        mount = result ? mounts.erase(mount) : std::next(mount);
    }
    sweep();
}

/// Gives up what no mount needs any more.
void CarouselMounts::sweep() {
    for (auto each = shown.begin(); each != shown.end();) {
        if (isWanted(each->first)) {
            ++each;
            continue;
        }
        folders.remove(each->second.name);
        each = shown.erase(each);
    }
    if (mounts.empty()) {
        carousels.reset();
    }
}

}  // namespace dtvservice
