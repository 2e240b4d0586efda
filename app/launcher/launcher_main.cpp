// korvel-cli itself: a small program without Qt. It answers `--version` and the plain text listing
// of an archive on its own, and hands every other command line to the full command set, a module
// it loads only then: most of a Qt program's start is the loader mapping Qt and its libraries.

#include "cli_module.h"

#include "pod/format/pod_format.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace {

using korvel::PodDirectory;

// The archive's bytes through an open descriptor.
class FileSource final : public korvel::PodSource {
public:
    FileSource(int fd, long long size) : m_fd(fd), m_size(size) {}
    long long size() const override { return m_size; }
    long long readAt(long long offset, char* out, long long length) override {
        long long done = 0;
        while (done < length) {
            const ssize_t got = ::pread(m_fd, out + done, size_t(length - done), off_t(offset + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return -1;
            if (got == 0)
                break;
            done += got;
        }
        return done;
    }

private:
    int m_fd;
    long long m_size;
};

class OpenFile {
public:
    explicit OpenFile(int fd) : m_fd(fd) {}
    ~OpenFile() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int fd() const { return m_fd; }

private:
    int m_fd;
};

struct ListRequest {
    const char* path = nullptr;
    bool sorted = false;
};

// `list [--sort] PATH` in any order, and nothing else.
std::optional<ListRequest> plainListRequest(int argc, char** argv) {
    if (argc < 3 || argc > 4 || std::strcmp(argv[1], "list") != 0)
        return std::nullopt;
    ListRequest request;
    for (int i = 2; i < argc; ++i) {
        const char* arg = argv[i];
        if (std::strcmp(arg, "--sort") == 0 && !request.sorted)
            request.sorted = true;
        else if (arg[0] == '-' || request.path)
            return std::nullopt;
        else
            request.path = arg;
    }
    if (!request.path)
        return std::nullopt;
    return request;
}

// True when the environment cannot make the full command print or choose differently: it refuses a
// code page it cannot convert named by KORVEL_CODEPAGE. (Any other code page leaves plain ASCII as
// it is.)
bool environmentIsNeutral() {
    if (const char* codePage = std::getenv("KORVEL_CODEPAGE")) {
        for (const char* c = codePage; *c; ++c)
            if (std::strchr(" \t\n\v\f\r", *c) == nullptr)
                return false;
    }
    return true;
}

// The clean absolute path of a typed host path, when the full command would name and open exactly
// that file: plain ASCII (no code page changes it), not a game path ("C:..."), "~", quoted or
// blank-padded text, and no "\" (a separator of game paths), "~" (not plain in every code page),
// ".." (resolved as text there) or component ending in a blank or a dot (renamed by Win32 rules).
std::optional<std::string> plainHostPath(std::string_view typed) {
    if (typed.empty() || typed[0] == '~' || typed[0] == ' ' || (typed.size() >= 2 && typed[1] == ':'))
        return std::nullopt;
    std::string absolute;
    if (typed[0] != '/') {
        char folder[PATH_MAX];
        if (!::getcwd(folder, sizeof folder))
            return std::nullopt;
        absolute = folder;
        absolute += '/';
    }
    absolute += typed;
    std::string clean;
    for (size_t from = 0; from < absolute.size();) {
        size_t to = absolute.find('/', from);
        if (to == std::string::npos)
            to = absolute.size();
        const std::string_view component = std::string_view(absolute).substr(from, to - from);
        from = to + 1;
        if (component.empty() || component == ".")
            continue;
        if (component == ".." || component.back() == ' ' || component.back() == '.')
            return std::nullopt;
        for (char c : component) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || byte >= 0x7F || c == '\\' || c == '~' || c == '"')
                return std::nullopt;
        }
        clean += '/';
        clean += component;
    }
    if (clean.empty())
        return std::nullopt;
    return clean;
}

char asciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - 32) : c;
}

void copyText(std::string& out, std::string_view text) {
    out.append(text);
}

// Lists the archive when the result is certainly the full command's; nullopt to hand it over.
std::optional<int> listPlainArchive(const ListRequest& request) {
    if (!environmentIsNeutral())
        return std::nullopt;
    const std::optional<std::string> path = plainHostPath(request.path);
    if (!path)
        return std::nullopt;
    const OpenFile file(::open(path->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (file.fd() < 0 || ::fstat(file.fd(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    FileSource source(file.fd(), status.st_size);
    PodDirectory listing;
    if (korvel::parsePodDirectory(source, listing) || !korvel::listingIsPlainAscii(listing))
        return std::nullopt;
    korvel::PodOutput output(stdout);
    if (!korvel::writePodTextListing(listing, korvel::podDisplayOrder(listing.entries, request.sorted, asciiUpper),
                                     output, copyText)) {
        std::setlocale(LC_ALL, ""); // the system's reason in the user's language, as the full program gives it
        std::fprintf(stderr, "%s\n", korvel::listingWriteFailureText(output.errorNumber()).c_str());
        return 1;
    }
    return 0;
}

// The folder this program was started from, without a trailing "/".
std::string programFolder() {
    char target[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", target, sizeof target - 1);
    if (length <= 0)
        return ".";
    const std::string self(target, size_t(length));
    const size_t slash = self.rfind('/');
    return slash == std::string::npos ? std::string(".") : self.substr(0, slash);
}

int moduleFailure(const std::string& file) {
    const char* reason = ::dlerror();
    std::fprintf(stderr, "korvel-cli: the command module %s could not be loaded: %s\n", file.c_str(),
                 reason ? reason : "no reason given");
    return 1;
}

// Runs the command line through the full command set: beside the program in the build tree, in
// <libdir>/korvel when installed.
int runModule(int argc, char** argv) {
    const std::string folder = programFolder();
    const std::string candidates[] = {folder + '/' + kCliModuleFile,
                                      folder + "/../" KORVEL_LIBDIR "/korvel/" + kCliModuleFile};
    for (const std::string& file : candidates) {
        if (::access(file.c_str(), F_OK) != 0)
            continue;
        void* module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        const auto entry = module ? reinterpret_cast<CliEntryFunction>(::dlsym(module, kCliEntryFunction)) : nullptr;
        if (!entry)
            return moduleFailure(file);
        return entry(argc, argv);
    }
    ::dlopen(candidates[1].c_str(), RTLD_NOW | RTLD_LOCAL); // for the loader's own reason
    return moduleFailure(candidates[1]);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("korvel-cli %d.%d.%d\n", KORVEL_VERSION_MAJOR, KORVEL_VERSION_MINOR, KORVEL_VERSION_PATCH);
        return 0;
    }
    if (const std::optional<ListRequest> request = plainListRequest(argc, argv)) {
        if (const std::optional<int> status = listPlainArchive(*request))
            return *status;
    }
    return runModule(argc, argv);
}
