// Carousels all the way: a folder, tsmake, the service, the library, and a browser that writes the files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>

#include "broadcasts.h"
#include "service_process.h"

namespace {

using Files = std::map<std::string, std::string>;

constexpr std::uint32_t kFiles = 1000;

std::string someBytes(std::uint32_t seed, std::size_t size) {
    std::minstd_rand random(seed + 1);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() >> 8U);
    }
    return bytes;
}

/// In ten folders, up to six kilobytes each. Every tenth changes with the version.
Files filesOf(std::uint32_t version, std::uint32_t count) {
    constexpr std::size_t kLargest = 6000;
    Files files;
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::uint32_t seed = index % 10 == 0 ? index + version * count : index;
        files["folder" + std::to_string(index % 10) + "/file" + std::to_string(index)] =
            someBytes(seed, seed * std::size_t{7} % kLargest);
    }
    files["version"] = std::to_string(version);
    return files;
}

void write(const Files& files, const std::string& folder) {
    for (const auto& [path, bytes] : files) {
        std::filesystem::create_directories(std::filesystem::path(folder + "/" + path).parent_path());
        std::ofstream(folder + "/" + path, std::ios::binary) << bytes;
    }
}

Files filesBelow(const std::string& folder) {
    Files files;
    std::error_code missing;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder, missing)) {
        if (each.is_regular_file()) {
            files[each.path().string().substr(folder.size() + 1)] = fileText(each.path());
        }
    }
    return files;
}

/// A broadcast of tsmake with one service and this carousel.
std::string broadcastOf(const std::string& carousel, const std::string& seconds) {
    const std::string description = kRunDirectory + "/carousel.json";
    std::string path = kRunDirectory + "/carousel.ts";
    std::ofstream(description) << R"({"bitRate": 10000000, "originalNetworkId": 1, "transportStreamId": 1025,
        "services": [{"id": 28106, "type": 25, "name": "One",
                      "components": [{"kind": "video", "tag": 1}], "carousels": [)"
                               << carousel << "]}]}";
    ChildProcess tsmake(TSMAKE, {path, "--description", description, "--seconds", seconds}, "tsmake");
    EXPECT_EQ(tsmake.wait(), 0) << tsmake.output();
    return path;
}

/// The files that a browser has got.
Files received() {
    const std::string folder = kRunDirectory + "/received";
    std::filesystem::remove_all(folder);
    ChildProcess shell(DVBSHELL, {"carousel", "28106", "--seconds", "100", "--out", folder}, "shell");
    EXPECT_EQ(shell.wait(), 0) << shell.output();
    return filesBelow(folder);
}

void withoutAHundredth(const std::string& path) {
    const std::string whole = fileText(path);
    std::minstd_rand random(1);  // the same losses in every run
    std::string kept;
    for (std::size_t at = 0; at < whole.size(); at += kPacketSize) {
        kept += random() % 100 == 0 ? "" : whole.substr(at, kPacketSize);
    }
    std::ofstream(path, std::ios::binary) << kept;
}

}  // namespace

TEST(ACarouselOfAFolder, ReachesABrowserByteForByte) {
    const Files files = filesOf(0, kFiles);
    write(files, kRunDirectory + "/folder");
    const ServiceProcess service(broadcastOf(R"({"folder": "folder", "bitRate": 8000000})", "8"));
    EXPECT_TRUE(received() == files);
    ChildProcess shell(DVBSHELL, {"carousel", "get", "28106", "folder7/file777"}, "file");
    EXPECT_EQ(shell.wait(), 0);
    EXPECT_EQ(shell.output(), files.at("folder7/file777"));
}

TEST(ACarouselOfAFolder, IsReadFromThePresentedService) {
    const Files files = filesOf(0, 20);
    write(files, kRunDirectory + "/folder");
    const ServiceProcess service(broadcastOf(R"({"folder": "folder", "bitRate": 8000000})", "2"));
    ChildProcess file(DVBSHELL, {"carousel", "get", "folder7/file17"}, "file");
    EXPECT_EQ(file.wait(), 0);
    EXPECT_EQ(file.output(), files.at("folder7/file17"));
    const std::string folder = kRunDirectory + "/received";
    ChildProcess all(DVBSHELL, {"carousel", "--out", folder}, "shell");
    EXPECT_EQ(all.wait(), 0) << all.output();
    EXPECT_TRUE(filesBelow(folder) == files);
}

TEST(ACarouselOfAFolder, ReachesABrowserWithoutAHundredthOfItsPackets) {
    const Files files = filesOf(0, 100);
    write(files, kRunDirectory + "/folder");
    const std::string path = broadcastOf(R"({"folder": "folder", "bitRate": 8000000, "blockSize": 150})", "4");
    withoutAHundredth(path);
    const ServiceProcess service(path);
    EXPECT_TRUE(received() == files);
}

TEST(ACarouselOfAFolder, ReachesABrowserInOneVersionOrTheNext) {
    std::vector<Files> versions;
    std::string list;
    for (std::uint32_t version = 0; version < 3; ++version) {
        const std::string folder = "folder" + std::to_string(version);
        versions.push_back(filesOf(version, 100));
        write(versions.back(), kRunDirectory + "/" + folder);
        list += (version == 0 ? "" : ", ") + (R"({"second": )" + std::to_string(version * 2)) + R"(, "folder": ")" +
                folder + R"("})";
    }
    const ServiceProcess service(broadcastOf(R"({"bitRate": 8000000, "versions": [)" + list + "]}", "6"));
    std::set<std::ptrdiff_t> seen;
    EXPECT_TRUE(eventually(
        [&] {
            const auto version = std::find(versions.begin(), versions.end(), received());
            seen.insert(version - versions.begin());
            return seen.size() >= versions.size();
        },
        std::chrono::minutes(2)));
    EXPECT_EQ(seen.count(3), 0U) << "a mixture";
    EXPECT_EQ(seen.size(), versions.size());
}
