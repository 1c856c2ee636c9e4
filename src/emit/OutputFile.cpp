#include "emit/OutputFile.h"

#include "diag/ErrorHandler.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorp {

namespace {

// The temporaries not yet committed, in fixed buffers so that a signal handler can remove them:
// one for the object, one for the listing.
constexpr int TEMPORARY_SLOTS = 2;
constexpr std::size_t TEMPORARY_NAME_BYTES = 4096;
char p_temporaryNames[TEMPORARY_SLOTS][TEMPORARY_NAME_BYTES];
volatile std::sig_atomic_t p_slotInUse[TEMPORARY_SLOTS];
unsigned p_temporaryCount = 0;

// A slot holding `name`, or -1 when none is free or the name doesn't fit.
int claimSlot(const std::string& name)
{
    if (name.size() >= TEMPORARY_NAME_BYTES)
        return -1;
    for (int slot = 0; slot < TEMPORARY_SLOTS; ++slot) {
        if (!p_slotInUse[slot]) {
            std::memcpy(p_temporaryNames[slot], name.c_str(), name.size() + 1);
            p_slotInUse[slot] = 1;
            return slot;
        }
    }
    return -1;
}

void releaseSlot(int& slot)
{
    if (slot >= 0)
        p_slotInUse[slot] = 0;
    slot = -1;
}

} // namespace

OutputFile::~OutputFile()
{
    discard();
}

bool OutputFile::open(const char* name)
{
    m_name = name;
    struct stat status = {};
    const bool exists = stat(name, &status) == 0;
    const bool regular = exists ? S_ISREG(status.st_mode) : errno == ENOENT;
    int fd = regular ? createTemporary(exists ? status.st_mode : 0) : -1;
    // A folder that takes no new file may still hold a writable output: that one is overwritten.
    if (fd < 0 && (!regular || errno == EACCES || errno == EPERM))
        fd = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    m_stream = fdopen(fd, "wb");
    if (!m_stream) {
        const int reason = errno;
        ::close(fd);
        discard();
        errno = reason;
        return false;
    }
    m_device = !regular;
    return true;
}

int OutputFile::createTemporary(mode_t earlierMode)
{
    // Beside the output, so that the rename stays within one file system.
    const std::size_t slash = m_name.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : m_name.substr(0, slash + 1);
    for (int attempt = 0; attempt < 100; ++attempt) {
        m_temporary = folder + ".vorp-" + std::to_string(getpid()) + "-" + std::to_string(p_temporaryCount++) + ".tmp";
        // Named for the signal handler before it exists: an interrupt may come at any point.
        m_slot = claimSlot(m_temporary);
        const int fd = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            // The file replaces an earlier one with that one's permissions, as an overwrite would.
            if (earlierMode != 0)
                fchmod(fd, earlierMode & 07777);
            return fd;
        }
        const int reason = errno;
        releaseSlot(m_slot);
        m_temporary.clear();
        errno = reason;
        if (reason != EEXIST)
            break;
    }
    return -1;
}

void OutputFile::writeFailed()
{
    if (m_error == 0)
        m_error = errno != 0 ? errno : EIO;
}

bool OutputFile::close()
{
    if (m_stream) {
        if (std::fflush(m_stream) != 0 || std::ferror(m_stream))
            writeFailed();
        if (std::fclose(m_stream) != 0)
            writeFailed();
        m_stream = nullptr;
    }
    return !failed();
}

bool OutputFile::commit()
{
    if (!close())
        return false;
    if (!m_temporary.empty()) {
        if (std::rename(m_temporary.c_str(), m_name.c_str()) != 0) {
            writeFailed();
            return false;
        }
        m_temporary.clear();
        releaseSlot(m_slot);
    }
    return true;
}

void OutputFile::discard()
{
    if (m_stream) {
        std::fclose(m_stream);
        m_stream = nullptr;
    }
    if (!m_temporary.empty()) {
        unlink(m_temporary.c_str());
        m_temporary.clear();
    }
    releaseSlot(m_slot);
}

void OutputFile::reportFailure(ErrorHandler& errors) const
{
    errors.fatalError(false, "vorp: Error: unable to write '%s': %s\n", m_name.c_str(), std::strerror(m_error));
}

void OutputFile::removeTemporaries()
{
    for (int slot = 0; slot < TEMPORARY_SLOTS; ++slot) {
        if (p_slotInUse[slot])
            unlink(p_temporaryNames[slot]);
    }
}

} // namespace vorp
