// distribution/download.cpp
#include "distribution/download.h"

#include <fstream>
#include <ios>
#include <system_error>

#include <curl/curl.h>
#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/program_version.h"
#include "distribution/sealed_file.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

std::string downloadRoot = TARNWING_DOWNLOAD_ROOT; // run thread; set by tests before it runs

/// libcurl takes a shorter count than it gave for a failure.
std::size_t writeToFile(const char* bytes, std::size_t size, std::size_t count, void* file) {
    auto& stream = *static_cast<std::ofstream*>(file);
    stream.write(bytes, static_cast<std::streamsize>(size * count));
    return stream ? size * count : 0;
}

int abortWhenStopping(void* /*unused*/, curl_off_t /*total*/, curl_off_t /*now*/, curl_off_t /*upTotal*/,
                      curl_off_t /*upNow*/) {
    return gf_isStopping() ? 1 : 0;
}

void setOptions(CURL* handle, const std::string& url, std::ofstream& file) {
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "TRNW");
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &writeToFile);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &file);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &abortWhenStopping);
}

/// No redirection is followed, so its page is not what was asked for, and a failure like an error page.
CURLcode transfer(CURL* handle) {
    const CURLcode code = curl_easy_perform(handle);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    constexpr long firstRedirection = 300;
    return code == CURLE_OK && status >= firstRedirection ? CURLE_HTTP_RETURNED_ERROR : code;
}

CURLcode fetch(CURL* handle, const std::string& url, std::ofstream& file) {
    setOptions(handle, url, file);
    const CURLcode code = transfer(handle);
    file.close();
    return code == CURLE_OK && !file ? CURLE_WRITE_ERROR : code;
}

bool replace(const fs::path& from, const fs::path& to) {
    if (const std::error_code error = platform::replaceFile(from, to)) {
        log(fmt::format("could not rename {} => {}: {}", platform::utf8FromPath(from), platform::utf8FromPath(to),
                        platform::readableText(error.message())));
        return false;
    }
    return true;
}

/// The name of a file in the making beside its target; goes when it has not become the target.
class SideFile {
public:
    SideFile(const fs::path& target, const char* ending) : target_(target), path_(target) { path_ += ending; }
    ~SideFile() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    SideFile(const SideFile&) = delete;
    SideFile& operator=(const SideFile&) = delete;

    const fs::path& path() const { return path_; }
    bool becomeTarget() const { return replace(path_, target_); }

private:
    fs::path target_;
    fs::path path_;
};

/// A server that tells a wrong length makes half a file look whole; the container knows better.
bool isWholeDataFile(const fs::path& path, std::string_view fileName) {
    if (gf_isWholeContainer(path, gf_dataKey())) {
        return true;
    }
    log(fmt::format("'{}' is incomplete, or sealed for another program", fileName));
    return false;
}

bool downloadWholeDataFile(std::string_view fileName, const fs::path& path) {
    const std::string url = gf_downloadUrl(fmt::format("{}{}/{}", "downloads/", thisVersion.major, fileName));
    const DownloadHandle handle = gf_newDownloadHandle();
    const SideFile arrived(path, ".new");
    return lf_downloadTo(handle.get(), url, arrived.path(), DownloadMode::binary) &&
           isWholeDataFile(arrived.path(), fileName) && arrived.becomeTarget();
}

} // namespace

DownloadHandle gf_newDownloadHandle() {
    return {curl_easy_init(), curl_easy_cleanup};
}

std::string gf_downloadUrl(std::string_view path) {
    return fmt::format("{}{}", downloadRoot, path);
}

void setDownloadRoot(std::string_view root) {
    downloadRoot = root.empty() ? TARNWING_DOWNLOAD_ROOT : root;
}

bool lf_downloadTo(void* handle, const std::string& url, const fs::path& path, DownloadMode mode) {
    if (handle == nullptr) {
        return false;
    }
    const SideFile side(path, ".part");
    std::ofstream file(side.path(),
                       mode == DownloadMode::binary ? std::ios::trunc | std::ios::binary : std::ios::trunc);
    if (!file) {
        log(fmt::format("Could not open output file: {}", platform::utf8FromPath(path)));
        return false;
    }
    if (const CURLcode code = fetch(handle, url, file); code != CURLE_OK) {
        log(fmt::format("Download error: '{}' for {}", curl_easy_strerror(code), url));
        return false;
    }
    return side.becomeTarget();
}

bool lf_downloadDataFile(std::string_view fileName, const fs::path& path) {
    if (!downloadWholeDataFile(fileName, path)) {
        log(fmt::format("Downloading '{}' failed !", fileName));
        return false;
    }
    log(fmt::format("Downloaded '{}' to '{}'", fileName, platform::utf8FromPath(path)));
    return true;
}
