// message_documents: writes the documents that describe every message and every JSON object, and the dissector of
// messages for protocol analysers.
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "documents.h"
#include "scenario_keys.h"

namespace {

constexpr int kUsageError = 2;

bool writeDissector(const std::string& frame, std::ostream& output, std::string&) {
    message_documents::writeDissector(frame, output);
    return true;
}

/// Writes a document that has a frame.
int writeWith(const char* path, bool (*write)(const std::string& frame, std::ostream& output, std::string& error)) {
    std::ifstream file(path);
    const std::string frame((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::string error;
    if (!file || !write(frame, std::cout, error)) {
        std::cerr << "message_documents: " << path << ": " << (file ? error : "cannot be read") << "\n";
        return 1;
    }
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "messages") == 0) {
        message_documents::writeMarkdown(std::cout);
        return std::cout.flush() ? 0 : 1;
    }
    if (argc == 2 && std::strcmp(argv[1], "scenarios") == 0) {
        std::cout << dtvservice::scenarioSchema();
        return std::cout.flush() ? 0 : 1;
    }
    if (argc == 3 && std::strcmp(argv[1], "schema") == 0) {
        return writeWith(argv[2], message_documents::writeSchema);
    }
    if (argc == 3 && std::strcmp(argv[1], "dissector") == 0) {
        return writeWith(argv[2], writeDissector);
    }
    std::cerr << "usage: message_documents messages | scenarios | schema FRAME | dissector FRAME\n";
    return kUsageError;
}
