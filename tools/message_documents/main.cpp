// message_documents: writes the documents that describe every message and every JSON object.
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "documents.h"

namespace {

constexpr int kUsageError = 2;

int writeSchemaOf(const char* path) {
    std::ifstream file(path);
    const std::string frame((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::string error;
    if (!file || !message_documents::writeSchema(frame, std::cout, error)) {
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
    if (argc == 3 && std::strcmp(argv[1], "schema") == 0) {
        return writeSchemaOf(argv[2]);
    }
    std::cerr << "usage: message_documents messages | schema FRAME\n";
    return kUsageError;
}
