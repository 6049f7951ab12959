/*
 * Binary files, as descriptors or as private mappings.
 */
#include "core/bf.h"

#include "core/f.h"
#include "core/sh.h"
#include "core/sm.h"
#include "host/host.h"

#include <cerrno>
#include <cstdlib>
#include <iterator>

enum BF_STATUS {
    BF_SUCCESSFUL,
    BF_NO_ACCESS,
    BF_NOT_FOUND,
    BF_LOCKED,
    BF_BAD_MODE,
    BF_BAD_SEEK,
    BF_WRITE_FAILED,
    BF_READ_FAILED,
    BF_NOT_ENOUGH_DATA,
    BF_NO_SIZE,
    BF_UNSPECIFIED,
    BF_NOT_CLOSED,
    BF_STATUS_COUNT
};

static constexpr const char *messages[] = {
    "Successful",
    "No access to file",
    "File doesn't exist",
    "File is locked by another user",
    "Bad mode parameter",
    "Bad seek",
    "Write failed",
    "Read failed",
    "Not enough data for read",
    "Unable to determine file size",
    "Unspecified failure",
    "Failed to close the file",
};
static_assert(std::size(messages) == BF_STATUS_COUNT, "one text for each status");

static constexpr int32_t map_mode = 4;
static constexpr int32_t alignment = 512;

/** What a handle of mode 4 points to. */
struct BF_MAPPING {
    HOST_MAPPING view;
    BF_MAPPING *next;
    BF_MAPPING *previous;
};

// All that are open, so that BF_FileSize can tell them from descriptors.
static BF_MAPPING *mappings;

static BF_MAPPING *as_mapping(intptr_t handle)
{
    return reinterpret_cast<BF_MAPPING *>(handle);
}

void BF_Initialise()
{
    SM_Initialise();
}

static int32_t open_mapping(intptr_t *handle, const char *path)
{
    auto *mapping = static_cast<BF_MAPPING *>(SH_NameAllocate(sizeof(BF_MAPPING), "BF:MAPPING"));
    if (!HOST_Map(path, &mapping->view)) {
        SH_Free(mapping);
        return BF_NO_ACCESS;
    }
    mapping->next = mappings;
    if (mappings != nullptr) mappings->previous = mapping;
    mappings = mapping;
    *handle = reinterpret_cast<intptr_t>(mapping);
    return BF_SUCCESSFUL;
}

static int32_t status_of_error(int error)
{
    if (error == ENOENT) return BF_NOT_FOUND;
    return error == EACCES ? BF_NO_ACCESS : BF_UNSPECIFIED;
}

int32_t BF_OpenFile(intptr_t *handle, const char *path, int32_t mode)
{
    static constexpr HOST_OPEN_MODE modes[] = { HOST_READ, HOST_CREATE, HOST_UPDATE, HOST_APPEND };
    if (mode < 0 || mode > map_mode) return BF_BAD_MODE;
    if (mode == map_mode) return open_mapping(handle, path);
    const int descriptor = HOST_Open(path, modes[mode]);
    if (descriptor < 0) return status_of_error(errno);
    *handle = descriptor;
    return BF_SUCCESSFUL;
}

int32_t BF_OpenContextFile(intptr_t *handle, const char *variable, const char *name, int32_t mode)
{
    const char *directories = std::getenv(variable);
    if (directories == nullptr) return BF_OpenFile(handle, name, mode);
    char path[F_PATH_SIZE];
    F_FindInDirectories(path, directories, name);
    return BF_OpenFile(handle, path, mode);
}

int32_t BF_CloseFile(intptr_t handle)
{
    return HOST_Close(static_cast<int>(handle)) ? BF_SUCCESSFUL : BF_NOT_CLOSED;
}

int32_t BF_UnmapFile(intptr_t handle)
{
    BF_MAPPING *mapping = as_mapping(handle);
    if (mapping->previous != nullptr)
        mapping->previous->next = mapping->next;
    else
        mappings = mapping->next;
    if (mapping->next != nullptr) mapping->next->previous = mapping->previous;
    HOST_Unmap(&mapping->view);
    SH_Free(mapping);
    return BF_SUCCESSFUL;
}

int32_t BF_GetMappedAddress(intptr_t handle, void **address)
{
    *address = as_mapping(handle)->view.address;
    return BF_SUCCESSFUL;
}

size_t BF_MappedSize(intptr_t handle)
{
    return as_mapping(handle)->view.size;
}

int32_t BF_Read(intptr_t handle, void *buffer, int32_t *count)
{
    const size_t wanted = *count > 0 ? static_cast<size_t>(*count) : 0;
    const int64_t got = HOST_Read(static_cast<int>(handle), buffer, wanted);
    if (got < 0) return BF_READ_FAILED;
    *count = static_cast<int32_t>(got);
    return static_cast<size_t>(got) < wanted ? BF_NOT_ENOUGH_DATA : BF_SUCCESSFUL;
}

int32_t BF_Write(intptr_t handle, const void *buffer, int32_t count)
{
    const size_t size = count > 0 ? static_cast<size_t>(count) : 0;
    return HOST_Write(static_cast<int>(handle), buffer, size) ? BF_SUCCESSFUL : BF_WRITE_FAILED;
}

int32_t BF_Address(intptr_t handle, int32_t *position)
{
    const int64_t at = HOST_Position(static_cast<int>(handle));
    if (at < 0 || at > INT32_MAX) return BF_BAD_SEEK;
    *position = static_cast<int32_t>(at);
    return BF_SUCCESSFUL;
}

int32_t BF_Seek(intptr_t handle, int32_t position)
{
    return HOST_Seek(static_cast<int>(handle), position) ? BF_SUCCESSFUL : BF_BAD_SEEK;
}

int32_t BF_Align(intptr_t handle)
{
    int32_t position = 0;
    const int32_t status = BF_Address(handle, &position);
    if (status != BF_SUCCESSFUL) return status;
    const int64_t aligned = (int64_t{ position } + alignment - 1) / alignment * alignment;
    return HOST_Seek(static_cast<int>(handle), aligned) ? BF_SUCCESSFUL : BF_BAD_SEEK;
}

static int32_t give_size(int64_t found, int32_t *size)
{
    if (found < 0 || found > INT32_MAX) return BF_NO_SIZE;
    *size = static_cast<int32_t>(found);
    return BF_SUCCESSFUL;
}

int32_t BF_Size(const char *path, int32_t *size)
{
    HOST_FILE_STATUS status;
    return HOST_GetStatus(path, &status) ? give_size(status.size, size) : BF_NO_SIZE;
}

int32_t BF_FileSize(intptr_t handle, int32_t *size)
{
    for (const BF_MAPPING *mapping = mappings; mapping != nullptr; mapping = mapping->next) {
        if (reinterpret_cast<intptr_t>(mapping) != handle) continue;
        return give_size(static_cast<int64_t>(mapping->view.size), size);
    }
    return give_size(HOST_DescriptorSize(static_cast<int>(handle)), size);
}

const char *BF_Message(int32_t status)
{
    if (status < 0 || status >= BF_STATUS_COUNT) return "Invalid reply code";
    return messages[status];
}
