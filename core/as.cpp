/*
 * Trees of names. Names may come in sorted order, and then the tree is one long branch: so nothing
 * here recurses, and walks keep their way back on a stack of their own.
 */
#include "core/as.h"

#include "core/sh.h"
#include "core/st.h"

#include <cstring>

struct AS_NODE {
    char *name; // owned
    intptr_t value;
    AS_NODE *higher;
    AS_NODE *lower;
};

struct AS_DOMAIN {
    AS_NODE *root;
    int32_t count;
};

/** The link that leads to a name, or the empty one where it belongs. */
static AS_NODE **find_link(AS_DOMAIN *domain, const char *name)
{
    AS_NODE **link = &domain->root;
    while (*link != nullptr) {
        const int order = std::strcmp((*link)->name, name);
        if (order == 0) break;
        link = order > 0 ? &(*link)->lower : &(*link)->higher;
    }
    return link;
}

static void free_node(AS_NODE *node)
{
    ST_Free(node->name);
    SH_Free(node);
}

void AS_Initialise() {}

AS_DOMAIN *AS_NewDomain()
{
    return static_cast<AS_DOMAIN *>(SH_NameAllocate(sizeof(AS_DOMAIN), "AS:DOMAIN"));
}

const char *AS_NewName(AS_DOMAIN *domain, const char *name, intptr_t value)
{
    AS_NODE **link = find_link(domain, name);
    if (*link != nullptr) return nullptr;
    auto *node = static_cast<AS_NODE *>(SH_NameAllocate(sizeof(AS_NODE), "AS:NODE"));
    node->name = ST_Allocate(name);
    node->value = value;
    *link = node;
    domain->count++;
    return node->name;
}

int32_t AS_FindName(AS_DOMAIN *domain, const char *name, intptr_t *value)
{
    const AS_NODE *node = *find_link(domain, name);
    if (node == nullptr) return 0;
    if (value != nullptr) *value = node->value;
    return 1;
}

int32_t AS_DelName(AS_DOMAIN *domain, const char *name)
{
    AS_NODE **link = find_link(domain, name);
    AS_NODE *node = *link;
    if (node == nullptr) return 0;
    *link = node->lower;
    if (node->higher != nullptr) {
        *link = node->higher;
        AS_NODE **lowest = &node->higher->lower;
        while (*lowest != nullptr)
            lowest = &(*lowest)->lower;
        *lowest = node->lower;
    }
    free_node(node);
    domain->count--;
    return 1;
}

int32_t AS_DomainSize(AS_DOMAIN *domain)
{
    return domain->count;
}

static constexpr size_t link_size = sizeof(void *);

/** A stack of nodes on the way down. */
struct NODE_STACK {
    AS_NODE **nodes;
    size_t count;
    size_t capacity; // bytes
};

static void push(NODE_STACK *stack, AS_NODE *node)
{
    const size_t used = stack->count * link_size;
    stack->nodes =
        static_cast<AS_NODE **>(SH_Grow(stack->nodes, used, &stack->capacity, used + link_size));
    stack->nodes[stack->count++] = node;
}

void AS_AllNames(AS_DOMAIN *domain, AS_VISITOR visitor, void *user)
{
    NODE_STACK stack = {};
    AS_NODE *node = domain->root;
    while (node != nullptr || stack.count > 0) {
        for (; node != nullptr; node = node->lower)
            push(&stack, node);
        node = stack.nodes[--stack.count];
        visitor(user, node->name, node->value);
        node = node->higher;
    }
    SH_Free(stack.nodes);
}

/**
 * Deletes nodes in post-order, higher subtree first: a node stays on the stack until both its links
 * are taken, and a link is cleared when it is followed.
 */
static void delete_nodes(AS_NODE *root, AS_DELETER deleter)
{
    NODE_STACK stack = {};
    if (root != nullptr) push(&stack, root);
    while (stack.count > 0) {
        AS_NODE *node = stack.nodes[stack.count - 1];
        AS_NODE **link = node->higher != nullptr ? &node->higher : &node->lower;
        if (*link != nullptr) {
            push(&stack, *link);
            *link = nullptr;
            continue;
        }
        if (deleter != nullptr) deleter(node->value);
        free_node(node);
        stack.count--;
    }
    SH_Free(stack.nodes);
}

void AS_DelDomain(AS_DOMAIN *domain, AS_DELETER deleter)
{
    delete_nodes(domain->root, deleter);
    SH_Free(domain);
}
