/*
 * Hash tables of names. What a client can see is that of a fixed array of buckets with chains in
 * order of entry: a deleted record stays until a search passes it, and a search passes what was
 * entered in its bucket before the record that it finds, or all of the bucket if it finds none. No
 * chain is kept for this: records carry the number of their entry, a bucket lists its deleted
 * records, and the search itself goes through an index by full hash that grows with the number of
 * names.
 */
#include "core/hs.h"

#include "core/sh.h"

#include <cstring>

static constexpr uint32_t shared_bucket_count = 1024;
static constexpr uint32_t first_index_size = 1024; // a power of 2

static constexpr size_t link_size = sizeof(void *);

/** A name; its characters and their terminator follow the record in the same block. */
struct HS_RECORD {
    HS_RECORD *next;  // on its chain of the index, or in its bucket's list once deleted
    HS_RECORD *older; // in its domain
    HS_RECORD *newer;
    intptr_t value; // the caller's
    uint32_t domain_number;
    uint32_t hash;   // of the name alone
    uint32_t length; // of the name
    uint32_t entry;  // counts up in the table
};

struct HS_TABLE {
    HS_RECORD **index;      // chains by hash and domain number; null before and after its life
    uint32_t index_size;    // a power of 2
    uint32_t record_count;  // on the index
    HS_RECORD **deleted;    // for each bucket its deleted records, latest deletion first
    uint32_t bucket_count;  // a power of 2
    uint32_t deleted_count; // in all buckets
    uint32_t last_entry;
};

struct HS_DOMAIN {
    HS_TABLE *table; // the shared one or its own
    HS_RECORD *newest;
    uint32_t domain_number; // 0 in a domain with a table of its own
    int32_t size;           // names
};

static HS_TABLE shared;
static bool is_initialised;
static uint32_t domain_counter;

// --- hashes ---

static constexpr uint64_t multiplier = 0x9E3779B97F4A7C15; // odd, bits evenly spread

static uint64_t load_bytes(const char *bytes, size_t count)
{
    uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

static uint64_t mix(uint64_t hash, uint64_t word)
{
    hash = (hash ^ word) * multiplier;
    return hash ^ hash >> 29;
}

uint32_t HS_Hash(const char *name, size_t length)
{
    uint64_t hash = length;
    for (; length >= 8; name += 8, length -= 8)
        hash = mix(hash, load_bytes(name, 8));
    hash = mix(hash, load_bytes(name, length));
    return static_cast<uint32_t>(hash * multiplier >> 32);
}

static HS_RECORD **index_slot(const HS_TABLE *table, uint32_t hash, uint32_t domain_number)
{
    const uint64_t mixed = mix(hash, domain_number) * multiplier;
    return &table->index[mixed >> 32 & (table->index_size - 1)];
}

/**
 * The bucket that a name belongs to: the sum of its bytes as signed numbers, and the domain number.
 */
static HS_RECORD **bucket_of(const HS_TABLE *table, const char *name, size_t length,
                             uint32_t domain_number)
{
    uint32_t sum = domain_number;
    for (size_t i = 0; i < length; i++)
        sum += static_cast<uint32_t>(static_cast<signed char>(name[i]));
    return &table->deleted[sum & (table->bucket_count - 1)];
}

// --- records and their index ---

static char *name_of(HS_RECORD *record)
{
    return reinterpret_cast<char *>(record + 1);
}

static void make_table(HS_TABLE *table, uint32_t bucket_count, uint32_t index_size)
{
    table->bucket_count = bucket_count;
    table->deleted = static_cast<HS_RECORD **>(SH_AllocateBytes(bucket_count * link_size));
    table->index_size = index_size;
    table->index = static_cast<HS_RECORD **>(SH_AllocateBytes(index_size * link_size));
}

static void free_list(HS_RECORD *record)
{
    while (record != nullptr) {
        HS_RECORD *next = record->next;
        SH_Free(record);
        record = next;
    }
}

/** Releases a table's records, whatever their state, and its arrays. */
static void drop_table(HS_TABLE *table)
{
    for (uint32_t i = 0; i < table->index_size; i++)
        free_list(table->index[i]);
    for (uint32_t i = 0; i < table->bucket_count; i++)
        free_list(table->deleted[i]);
    SH_Free(table->index);
    SH_Free(table->deleted);
    *table = HS_TABLE{};
}

static bool is_wanted(const HS_RECORD *record, uint32_t domain_number, const char *name,
                      size_t length, uint32_t hash)
{
    if (record->hash != hash || record->domain_number != domain_number) return false;
    return record->length == length && std::memcmp(record + 1, name, length) == 0;
}

/** Releases those deleted records of a bucket that a walk of its chain up to an entry passes. */
static void sweep(HS_TABLE *table, const char *name, size_t length, uint32_t domain_number,
                  const HS_RECORD *found)
{
    HS_RECORD **bucket = bucket_of(table, name, length, domain_number);
    while (*bucket != nullptr && (found == nullptr || (*bucket)->entry < found->entry)) {
        HS_RECORD *passed = *bucket;
        *bucket = passed->next;
        SH_Free(passed);
        table->deleted_count--;
    }
}

/** Finds a record, null if there is none, and cleans up behind itself. */
static HS_RECORD *search(const HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash)
{
    HS_TABLE *table = domain->table;
    if (table->index == nullptr) return nullptr;
    const uint32_t domain_number = domain->domain_number;
    HS_RECORD *record = *index_slot(table, hash, domain_number);
    while (record != nullptr && !is_wanted(record, domain_number, name, length, hash))
        record = record->next;
    if (table->deleted_count > 0) sweep(table, name, length, domain_number, record);
    return record;
}

static void put_on_index(HS_TABLE *table, HS_RECORD *record)
{
    HS_RECORD **slot = index_slot(table, record->hash, record->domain_number);
    record->next = *slot;
    *slot = record;
}

/** Doubles the index, so that its chains stay short. */
static void grow_index(HS_TABLE *table)
{
    HS_RECORD **old_index = table->index;
    const uint32_t old_size = table->index_size;
    table->index_size = old_size * 2;
    table->index = static_cast<HS_RECORD **>(SH_AllocateBytes(table->index_size * link_size));
    for (uint32_t i = 0; i < old_size; i++) {
        HS_RECORD *record = old_index[i];
        while (record != nullptr) {
            HS_RECORD *next = record->next;
            put_on_index(table, record);
            record = next;
        }
    }
    SH_Free(old_index);
}

static void take_off_index(HS_TABLE *table, HS_RECORD *record)
{
    HS_RECORD **link = index_slot(table, record->hash, record->domain_number);
    while (*link != record)
        link = &(*link)->next;
    *link = record->next;
    table->record_count--;
}

/** Leaves a record to the next search that passes it. */
static void mark_deleted(HS_TABLE *table, HS_RECORD *record)
{
    take_off_index(table, record);
    HS_RECORD **bucket = bucket_of(table, name_of(record), record->length, record->domain_number);
    record->next = *bucket;
    *bucket = record;
    table->deleted_count++;
}

static HS_RECORD *new_record(HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash)
{
    auto *record = static_cast<HS_RECORD *>(SH_AllocateBytes(sizeof(HS_RECORD) + length + 1));
    std::memcpy(name_of(record), name, length);
    record->domain_number = domain->domain_number;
    record->hash = hash;
    record->length = static_cast<uint32_t>(length);
    record->entry = ++domain->table->last_entry;
    record->older = domain->newest;
    if (domain->newest != nullptr) domain->newest->newer = record;
    domain->newest = record;
    domain->size++;
    return record;
}

// --- operations ---

void HS_Initialise()
{
    if (is_initialised) return;
    is_initialised = true;
    make_table(&shared, shared_bucket_count, first_index_size);
}

void HS_CleanUp()
{
    drop_table(&shared);
}

HS_DOMAIN *HS_NewDomain()
{
    auto *domain = static_cast<HS_DOMAIN *>(SH_NameAllocate(sizeof(HS_DOMAIN), "HS:DOMAIN"));
    domain->table = &shared;
    domain->domain_number = domain_counter++;
    return domain;
}

HS_DOMAIN *HS_NewHashTable(int32_t bucket_count)
{
    auto *domain = static_cast<HS_DOMAIN *>(SH_NameAllocate(sizeof(HS_DOMAIN), "HS:DOMAIN"));
    domain->table = static_cast<HS_TABLE *>(SH_NameAllocate(sizeof(HS_TABLE), "HS:TABLE"));
    const uint32_t count = bucket_count > 0 ? static_cast<uint32_t>(bucket_count) : 1;
    make_table(domain->table, count, 16);
    return domain;
}

static void delete_private_table(HS_TABLE *table)
{
    drop_table(table);
    SH_Free(table);
}

void HS_DelDomain(HS_DOMAIN *domain)
{
    HS_TABLE *table = domain->table;
    if (table != &shared) {
        delete_private_table(table);
    } else if (table->index != nullptr) { // else its records are gone already
        for (HS_RECORD *record = domain->newest; record != nullptr; record = record->older)
            mark_deleted(table, record);
    }
    SH_Free(domain);
}

const char *HS_NewName(HS_DOMAIN *domain, const char *name, intptr_t value)
{
    HS_TABLE *table = domain->table;
    const size_t length = std::strlen(name);
    const uint32_t hash = HS_Hash(name, length);
    if (table->index == nullptr || search(domain, name, length, hash) != nullptr) return nullptr;
    if (table->record_count >= table->index_size / 2 && table->index_size < 1u << 31)
        grow_index(table);
    HS_RECORD *record = new_record(domain, name, length, hash);
    record->value = value;
    put_on_index(table, record);
    table->record_count++;
    return name_of(record);
}

int32_t HS_FindHashed(HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash,
                      intptr_t *value)
{
    const HS_RECORD *record = search(domain, name, length, hash);
    if (record == nullptr) return 0;
    if (value != nullptr) *value = record->value;
    return 1;
}

int32_t HS_FindSpan(HS_DOMAIN *domain, const char *name, size_t length, intptr_t *value)
{
    return HS_FindHashed(domain, name, length, HS_Hash(name, length), value);
}

int32_t HS_FindName(HS_DOMAIN *domain, const char *name, intptr_t *value)
{
    return HS_FindSpan(domain, name, std::strlen(name), value);
}

/** Takes a record out of its domain's list of names. */
static void unlink_name(HS_DOMAIN *domain, HS_RECORD *record)
{
    if (record->newer != nullptr)
        record->newer->older = record->older;
    else
        domain->newest = record->older;
    if (record->older != nullptr) record->older->newer = record->newer;
    domain->size--;
}

int32_t HS_DelName(HS_DOMAIN *domain, const char *name)
{
    HS_TABLE *table = domain->table;
    if (table->index == nullptr) return 0;
    const size_t length = std::strlen(name);
    const uint32_t hash = HS_Hash(name, length);
    HS_RECORD *record = *index_slot(table, hash, domain->domain_number);
    while (record != nullptr && !is_wanted(record, domain->domain_number, name, length, hash))
        record = record->next;
    if (record == nullptr) return 0;
    unlink_name(domain, record);
    mark_deleted(table, record);
    return 1;
}

int32_t HS_AllNames(HS_DOMAIN *domain, HS_VISITOR visitor, void *user)
{
    if (domain->table->index == nullptr) return 1;
    int32_t result = 1;
    for (HS_RECORD *record = domain->newest; record != nullptr && result != 0;
         record = record->older)
        result = visitor(user, name_of(record), record->value);
    return result;
}

int32_t HS_DomainSize(HS_DOMAIN *domain)
{
    return domain->table->index == nullptr ? 0 : domain->size;
}
