/*
 * Name tables: order of visits, domains on the shared array, life of stored names, and cost.
 */
#include "core/hs.h"

#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <ostrum/as.h>
#include <random>
#include <string>
#include <vector>

namespace
{

int32_t collect(void *user, const char *name, intptr_t value)
{
    *static_cast<std::string *>(user) += std::string(name) + "=" + std::to_string(value) + " ";
    return std::strcmp(name, "stop") != 0;
}

std::string names_of(HS_DOMAIN *domain)
{
    std::string names;
    HS_AllNames(domain, collect, &names);
    return names;
}

std::string names_of(AS_DOMAIN *tree)
{
    std::string names;
    AS_AllNames(tree, collect, &names);
    return names;
}

class NameTables : public testing::Test
{
protected:
    void SetUp() override { HS_Initialise(); }
};

TEST_F(NameTables, NewestNameIsVisitedFirstAndZeroStops)
{
    HS_DOMAIN *domain = HS_NewDomain();
    std::string seen;
    EXPECT_EQ(HS_AllNames(domain, collect, &seen), 1);
    EXPECT_EQ(seen, "");
    HS_NewName(domain, "A", 1);
    HS_NewName(domain, "stop", 2);
    HS_NewName(domain, "C", 3);
    EXPECT_EQ(HS_AllNames(domain, collect, &seen), 0);
    EXPECT_EQ(seen, "C=3 stop=2 ");
    EXPECT_EQ(HS_DomainSize(domain), 3);
    EXPECT_EQ(HS_DelName(domain, "stop"), 1);
    EXPECT_EQ(names_of(domain), "C=3 A=1 ");
    HS_NewName(domain, "stop2", 4);
    HS_DelName(domain, "stop2");
    HS_DelName(domain, "A");
    EXPECT_EQ(names_of(domain), "C=3 ");
    HS_DelDomain(domain);
}

TEST_F(NameTables, DomainsAreApart)
{
    HS_DOMAIN *domains[3] = { HS_NewDomain(), HS_NewDomain(), HS_NewHashTable(16) };
    for (intptr_t i = 0; i < 3; i++)
        ASSERT_STREQ(HS_NewName(domains[i], "n\xE4me", i), "n\xE4me");
    EXPECT_EQ(HS_NewName(domains[1], "n\xE4me", 9), nullptr);
    intptr_t value = 77;
    EXPECT_EQ(HS_DelName(domains[0], "n\xE4me"), 1);
    EXPECT_EQ(HS_DelName(domains[0], "n\xE4me"), 0);
    EXPECT_EQ(HS_FindName(domains[0], "n\xE4me", &value), 0);
    EXPECT_EQ(value, 77);
    for (intptr_t i = 1; i < 3; i++) {
        EXPECT_EQ(HS_FindName(domains[i], "n\xE4me", &value), 1);
        EXPECT_EQ(value, i);
    }
    EXPECT_STREQ(HS_NewName(domains[0], "n\xE4me", 5), "n\xE4me");
    EXPECT_EQ(HS_FindName(domains[0], "N\xE4me", nullptr), 0);
    EXPECT_EQ(HS_FindSpan(domains[0], "n\xE4me+", 4, nullptr), 1);
    EXPECT_EQ(HS_FindSpan(domains[0], "n\xE4me+", 5, nullptr), 0);
    for (HS_DOMAIN *domain : domains)
        HS_DelDomain(domain);
}

TEST_F(NameTables, StoredNameOutlivesItsDeletionUntilASearchPasses)
{
    // Bytes that add up alike share a bucket, so "ab" stands before "ba" on its chain.
    HS_DOMAIN *domain = HS_NewDomain();
    HS_NewName(domain, "ab", 1);
    const char *stored = HS_NewName(domain, "ba", 2);
    HS_DelName(domain, "ba");
    EXPECT_EQ(HS_FindName(domain, "ab", nullptr), 1); // does not get as far
    EXPECT_STREQ(stored, "ba");
    EXPECT_EQ(HS_FindName(domain, "c", nullptr), 0); // another bucket
    EXPECT_STREQ(stored, "ba");
    EXPECT_EQ(HS_FindName(domain, "ba", nullptr), 0);
    EXPECT_STREQ(HS_NewName(domain, "ba", 3), "ba");
    EXPECT_EQ(names_of(domain), "ba=3 ab=1 ");
    HS_DelDomain(domain);
}

TEST_F(NameTables, AgreeWithAMapUnderRandomUse)
{
    std::mt19937 random(4711);
    HS_DOMAIN *domains[] = { HS_NewDomain(), HS_NewDomain(), HS_NewHashTable(4) };
    std::map<std::string, intptr_t> maps[3];
    for (int i = 0; i < 60000; i++) {
        const size_t which = random() % 3;
        const std::string name = "k" + std::to_string(random() % 3000);
        std::map<std::string, intptr_t> &map = maps[which];
        intptr_t value = -1;
        switch (random() % 3) {
        case 0:
            ASSERT_EQ(HS_NewName(domains[which], name.c_str(), i) != nullptr,
                      map.emplace(name, i).second);
            break;
        case 1:
            ASSERT_EQ(HS_DelName(domains[which], name.c_str()), static_cast<int>(map.erase(name)));
            break;
        default:
            ASSERT_EQ(HS_FindName(domains[which], name.c_str(), &value), map.contains(name));
            ASSERT_EQ(value, map.contains(name) ? map[name] : -1);
        }
        if (i % 20000 == 0) { // a scope ends
            HS_DelDomain(domains[0]);
            domains[0] = HS_NewDomain();
            maps[0].clear();
        }
    }
    for (size_t i = 0; i < 3; i++) {
        EXPECT_EQ(HS_DomainSize(domains[i]), static_cast<int32_t>(maps[i].size()));
        HS_DelDomain(domains[i]);
    }
}

TEST_F(NameTables, CostDoesNotGrowWithTheNumberOfNames)
{
    const auto start = std::chrono::steady_clock::now();
    std::vector<HS_DOMAIN *> domains;
    for (int i = 0; i < 1000000; i++) {
        if (i % 1000 == 0) domains.push_back(HS_NewDomain());
        ASSERT_NE(HS_NewName(domains.back(), std::to_string(i).c_str(), i), nullptr);
    }
    for (int i = 0; i < 1000000; i += 3)
        ASSERT_EQ(HS_DelName(domains[i / 1000], std::to_string(i).c_str()), 1);
    for (HS_DOMAIN *domain : domains)
        HS_DelDomain(domain);
    // With chains of a thousand names each this takes minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(NameTables, CleanUpLeavesDeadDomainsHarmless)
{
    HS_DOMAIN *domain = HS_NewDomain();
    HS_DOMAIN *other = HS_NewDomain();
    HS_NewName(domain, "a", 1);
    HS_NewName(other, "b", 1);
    HS_DelDomain(other);
    HS_CleanUp();
    HS_Initialise(); // is not done a second time
    EXPECT_EQ(HS_NewName(domain, "b", 1), nullptr);
    EXPECT_EQ(HS_FindName(domain, "a", nullptr), 0);
    EXPECT_EQ(HS_DelName(domain, "a"), 0);
    EXPECT_EQ(names_of(domain), "");
    EXPECT_EQ(HS_DomainSize(domain), 0);
    HS_DelDomain(domain);
    HS_CleanUp();
}

std::vector<intptr_t> deleted_values;

void note_deleted(intptr_t value)
{
    deleted_values.push_back(value);
}

TEST(NameTrees, AgreeWithAMapUnderRandomUse)
{
    std::mt19937 random(4711);
    AS_DOMAIN *tree = AS_NewDomain();
    std::map<std::string, intptr_t> map; // in order of unsigned bytes too
    for (int i = 0; i < 5000; i++) {
        const std::string name =
            std::string(random() % 2, 'a') + static_cast<char>(random() % 40 + 200);
        intptr_t value = -1;
        ASSERT_EQ(AS_FindName(tree, name.c_str(), &value), map.contains(name));
        ASSERT_EQ(value, map.contains(name) ? map[name] : -1);
        if (random() % 2 == 0) {
            ASSERT_EQ(AS_DelName(tree, name.c_str()), static_cast<int>(map.erase(name)));
        } else {
            ASSERT_EQ(AS_NewName(tree, name.c_str(), i) != nullptr, map.emplace(name, i).second);
        }
        std::string expected;
        for (const auto &[key, number] : map)
            expected += key + "=" + std::to_string(number) + " ";
        ASSERT_EQ(names_of(tree), expected);
        ASSERT_EQ(AS_DomainSize(tree), static_cast<int32_t>(map.size()));
    }
    AS_DelDomain(tree, nullptr);
}

TEST(NameTrees, DeleterRunsInPostOrderHigherFirst)
{
    AS_DOMAIN *tree = AS_NewDomain();
    intptr_t value = 0;
    for (const char *name : { "d", "b", "f", "a", "c", "e", "g" })
        AS_NewName(tree, name, value++);
    AS_DelDomain(tree, note_deleted);
    EXPECT_EQ(deleted_values, (std::vector<intptr_t>{ 6, 5, 2, 4, 3, 1, 0 }));
}

TEST(NameTrees, OneLongBranchIsWalkedAndDeleted)
{
    AS_DOMAIN *tree = AS_NewDomain();
    char name[8];
    for (int i = 0; i < 5000; i++) {
        std::snprintf(name, sizeof name, "%05d", i);
        AS_NewName(tree, name, i);
    }
    std::string names = names_of(tree);
    EXPECT_EQ(names.substr(0, 16), "00000=0 00001=1 ");
    deleted_values.clear();
    AS_DelDomain(tree, note_deleted);
    EXPECT_EQ(deleted_values.size(), 5000u);
}

} // namespace
