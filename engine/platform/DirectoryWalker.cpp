#include "DirectoryWalker.hpp"

#include <cerrno>
#include <cstring>
#include <fts.h>

namespace brevant::platform {

struct DirectoryWalker::Handle {
    FTS* fts = nullptr;
    FTSENT* last = nullptr;
};

namespace {

int byName(const FTSENT** a, const FTSENT** b) {
    return std::strcmp((*a)->fts_name, (*b)->fts_name);
}

} // namespace

std::unique_ptr<DirectoryWalker> DirectoryWalker::open(const std::string& root, int& error) {
    std::string copy = root;
    char* roots[] = {copy.data(), nullptr};
    errno = 0;
    FTS* fts = ::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, byName);
    if (fts == nullptr) {
        error = errno;
        return nullptr;
    }
    auto handle = std::make_unique<Handle>();
    handle->fts = fts;
    return std::unique_ptr<DirectoryWalker>(new DirectoryWalker(std::move(handle)));
}

DirectoryWalker::DirectoryWalker(std::unique_ptr<Handle> handle)
    : handle_(std::move(handle)) {}

DirectoryWalker::~DirectoryWalker() {
    ::fts_close(handle_->fts);
}

std::optional<DirectoryWalker::Entry> DirectoryWalker::next() {
    for (;;) {
        errno = 0;
        FTSENT* entry = ::fts_read(handle_->fts);
        handle_->last = entry;
        if (entry == nullptr) {
            failure_ = errno;
            return std::nullopt;
        }
        Entry out;
        out.path = entry->fts_path;
        out.name = std::string_view(entry->fts_name, entry->fts_namelen);
        out.level = static_cast<int>(entry->fts_level);
        switch (entry->fts_info) {
        case FTS_D:
            out.kind = Kind::directory;
            break;
        case FTS_DP:
        case FTS_DOT:
        case FTS_DC: // a folder met again through a bind mount: already walked
            continue;
        case FTS_F:
            out.kind = Kind::regularFile;
            break;
        case FTS_SL:
        case FTS_SLNONE:
            out.kind = Kind::symbolicLink;
            break;
        case FTS_DEFAULT:
            out.kind = Kind::special;
            break;
        case FTS_NS:
        case FTS_NSOK:
            out.kind = Kind::noStatus;
            out.error = entry->fts_errno;
            break;
        case FTS_DNR:
        case FTS_ERR:
            out.kind = Kind::unreadableDirectory;
            out.error = entry->fts_errno;
            break;
        default:
            continue;
        }
        return out;
    }
}

void DirectoryWalker::skipContents() {
    if (handle_->last != nullptr) {
        ::fts_set(handle_->fts, handle_->last, FTS_SKIP);
    }
}

} // namespace brevant::platform
