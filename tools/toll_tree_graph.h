#pragma once

#include <string>
#include <vector>

#include <ostrum.h>

/**
 * Writes the trees of a module as graphs in the DOT language, one digraph for each tree that has a
 * body: an ellipse for a NODE, a box for a SUBTREE, a double outline for a LEAF; an edge for each
 * value of a leg and each GOTO, a dashed one where control goes on with the statement behind.
 *
 * @param module    the module, parsed without errors
 * @param sections  its sections, in order
 * @return          the text; empty if the module has no tree
 */
std::string tree_graphs(TLP_MODULE *module, const std::vector<TLP_SECTION *> &sections);

/**
 * Writes the trees of a module as text for a person: each node with what it asks or gives, and below
 * it where each value of a leg leads.
 *
 * @param module    the module, parsed without errors
 * @param sections  its sections, in order
 * @return          the text; empty if the module has no tree
 */
std::string tree_outlines(TLP_MODULE *module, const std::vector<TLP_SECTION *> &sections);

/** Keeps those of the sections that have a name, in either case. */
std::vector<TLP_SECTION *> sections_named(const std::vector<TLP_SECTION *> &sections,
                                          const std::string &name);
