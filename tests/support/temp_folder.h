// A folder for one test's files; it and all in it are gone afterwards.
//
//     const TempFolder folder;
//     options.file = folder.Path("app.log");
//     EXPECT_EQ(ReadFile(options.file), "...");
//
// immutable.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

class TempFolder {
  public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "test.XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make the folder " + name);
        }
        m_path = name;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string Path(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

// All bytes of a file; "" when it is not there.
inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
