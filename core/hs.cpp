/*
 * Hash tables of names. What a client can see is that of a fixed array of buckets with chains in
 * order of entry: a deleted record stays until a search passes it, and a search passes what was
 * entered in its bucket before the record that it finds, or all of the bucket if it finds none. No
 * chain is kept for this: records carry the number of their entry, a bucket lists its deleted
 * records, and the search itself goes through an index by full hash that each domain has of its own.
 * So the names of one scope stay together in the caches however many others there are.
 */
#include "core/hs.h"

#include "core/sh.h"

#include <cstddef>
#include <cstring>

static constexpr uint32_t shared_bucket_count = 1024;
static constexpr uint32_t first_index_size = 16; // a power of 2; enough for most functions

static constexpr size_t link_size = sizeof(void *);

/** A name; its characters and their terminator go on behind the record in the same block. */
struct HS_RECORD {
    HS_RECORD *next;  // on its chain of the index, or in its bucket's list once deleted
    HS_RECORD *older; // in its domain
    HS_RECORD *newer;
    intptr_t value;  // the caller's
    uint32_t hash;   // of the name alone
    uint32_t length; // of the name
    uint32_t entry;  // counts up in the table
    char name[4];
};

struct HS_TABLE {
    HS_RECORD **deleted; // for each bucket its deleted records, latest deletion first; null before
                         // and after the table's life
    uint32_t bucket_count;  // a power of 2
    uint32_t deleted_count; // in all buckets
    uint32_t last_entry;
    HS_DOMAIN *domains; // newest first
};

struct HS_DOMAIN {
    HS_TABLE *table; // the shared one or its own
    HS_RECORD *newest;
    HS_RECORD **index;      // chains by hash; null without names
    uint32_t index_size;    // a power of 2
    uint32_t domain_number; // 0 in a domain with a table of its own
    int32_t size;           // names
    HS_DOMAIN *older;       // in the table
    HS_DOMAIN *newer;
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

static HS_RECORD **index_slot(const HS_DOMAIN *domain, uint32_t hash)
{
    return &domain->index[hash & (domain->index_size - 1)];
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

static void make_table(HS_TABLE *table, uint32_t bucket_count)
{
    table->bucket_count = bucket_count;
    table->deleted = static_cast<HS_RECORD **>(SH_AllocateBytes(bucket_count * link_size));
}

static HS_DOMAIN *new_domain(HS_TABLE *table)
{
    auto *domain = static_cast<HS_DOMAIN *>(SH_AllocateRecord(sizeof(HS_DOMAIN), "HS:DOMAIN"));
    domain->table = table;
    domain->older = table->domains;
    if (table->domains != nullptr) table->domains->newer = domain;
    table->domains = domain;
    return domain;
}

static void unlink_domain(HS_DOMAIN *domain)
{
    if (domain->newer != nullptr)
        domain->newer->older = domain->older;
    else
        domain->table->domains = domain->older;
    if (domain->older != nullptr) domain->older->newer = domain->newer;
}

static void free_names(HS_DOMAIN *domain)
{
    while (domain->newest != nullptr) {
        HS_RECORD *record = domain->newest;
        domain->newest = record->older;
        SH_Free(record);
    }
    SH_Free(domain->index);
    domain->index = nullptr;
}

static void free_deleted(HS_RECORD *record)
{
    while (record != nullptr) {
        HS_RECORD *next = record->next;
        SH_Free(record);
        record = next;
    }
}

/** Releases a table's records, whatever their state, and its buckets; its domains stay, empty. */
static void drop_table(HS_TABLE *table)
{
    for (HS_DOMAIN *domain = table->domains; domain != nullptr; domain = domain->older)
        free_names(domain);
    if (table->deleted == nullptr) return;
    for (uint32_t i = 0; i < table->bucket_count; i++)
        free_deleted(table->deleted[i]);
    SH_Free(table->deleted);
    table->deleted = nullptr;
    table->deleted_count = 0;
}

static bool is_wanted(const HS_RECORD *record, const char *name, size_t length, uint32_t hash)
{
    return record->hash == hash && record->length == length &&
           std::memcmp(record->name, name, length) == 0;
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

/** Looks a name up in a domain's index, null if it is not there. */
static HS_RECORD *look_up(const HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash)
{
    if (domain->index == nullptr) return nullptr;
    HS_RECORD *record = *index_slot(domain, hash);
    while (record != nullptr && !is_wanted(record, name, length, hash))
        record = record->next;
    return record;
}

/** Finds a record, null if there is none, and cleans up behind itself. */
static HS_RECORD *search(const HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash)
{
    HS_RECORD *record = look_up(domain, name, length, hash);
    HS_TABLE *table = domain->table;
    if (table->deleted_count > 0) sweep(table, name, length, domain->domain_number, record);
    return record;
}

static void put_on_index(HS_DOMAIN *domain, HS_RECORD *record)
{
    HS_RECORD **slot = index_slot(domain, record->hash);
    record->next = *slot;
    *slot = record;
}

/** Makes the index, or doubles it so that its chains stay short. */
static void grow_index(HS_DOMAIN *domain)
{
    SH_Free(domain->index);
    domain->index_size = domain->index == nullptr ? first_index_size : domain->index_size * 2;
    domain->index =
        static_cast<HS_RECORD **>(SH_AllocateRecord(domain->index_size * link_size, "HS:INDEX"));
    for (HS_RECORD *record = domain->newest; record != nullptr; record = record->older)
        put_on_index(domain, record);
}

static void take_off_index(HS_DOMAIN *domain, HS_RECORD *record)
{
    HS_RECORD **link = index_slot(domain, record->hash);
    while (*link != record)
        link = &(*link)->next;
    *link = record->next;
}

/** Leaves a record that is off the index to the next search that passes it. */
static void mark_deleted(const HS_DOMAIN *domain, HS_RECORD *record)
{
    HS_TABLE *table = domain->table;
    HS_RECORD **bucket = bucket_of(table, record->name, record->length, domain->domain_number);
    record->next = *bucket;
    *bucket = record;
    table->deleted_count++;
}

static HS_RECORD *new_record(HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash)
{
    auto *record = static_cast<HS_RECORD *>(
        SH_AllocateRecord(offsetof(HS_RECORD, name) + length + 1, "HS:HS_RECORD"));
    std::memcpy(record->name, name, length);
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
    make_table(&shared, shared_bucket_count);
}

void HS_CleanUp()
{
    drop_table(&shared);
}

HS_DOMAIN *HS_NewDomain()
{
    HS_DOMAIN *domain = new_domain(&shared);
    domain->domain_number = domain_counter++;
    return domain;
}

HS_DOMAIN *HS_NewHashTable(int32_t bucket_count)
{
    auto *table = static_cast<HS_TABLE *>(SH_NameAllocate(sizeof(HS_TABLE), "HS:TABLE"));
    make_table(table, bucket_count > 0 ? static_cast<uint32_t>(bucket_count) : 1);
    return new_domain(table);
}

/** Leaves all names of a domain to later searches. */
static void delete_names(HS_DOMAIN *domain)
{
    HS_RECORD *record = domain->newest;
    while (record != nullptr) {
        HS_RECORD *older = record->older;
        mark_deleted(domain, record);
        record = older;
    }
    SH_Free(domain->index);
}

void HS_DelDomain(HS_DOMAIN *domain)
{
    HS_TABLE *table = domain->table;
    if (table == &shared) {
        delete_names(domain);
        unlink_domain(domain);
    } else {
        drop_table(table);
        SH_Free(table);
    }
    SH_Free(domain);
}

const char *HS_NewName(HS_DOMAIN *domain, const char *name, intptr_t value)
{
    const size_t length = std::strlen(name);
    const uint32_t hash = HS_Hash(name, length);
    if (domain->table->deleted == nullptr) return nullptr;
    if (search(domain, name, length, hash) != nullptr) return nullptr;
    if (static_cast<uint32_t>(domain->size) >= domain->index_size && domain->size < 1 << 30)
        grow_index(domain);
    HS_RECORD *record = new_record(domain, name, length, hash);
    record->value = value;
    put_on_index(domain, record);
    return record->name;
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
    const size_t length = std::strlen(name);
    HS_RECORD *record = look_up(domain, name, length, HS_Hash(name, length));
    if (record == nullptr) return 0;
    unlink_name(domain, record);
    take_off_index(domain, record);
    mark_deleted(domain, record);
    return 1;
}

int32_t HS_AllNames(HS_DOMAIN *domain, HS_VISITOR visitor, void *user)
{
    int32_t result = 1;
    for (HS_RECORD *record = domain->newest; record != nullptr && result != 0;
         record = record->older)
        result = visitor(user, record->name, record->value);
    return result;
}

int32_t HS_DomainSize(HS_DOMAIN *domain)
{
    return domain->table->deleted == nullptr ? 0 : domain->size;
}
