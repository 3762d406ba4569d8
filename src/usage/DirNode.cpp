#include "usage/DirNode.h"

#include "common/ByteCount.h"
#include "common/PackageExtensions.h"

#include <algorithm>
#include <array>

void rollUp(DirNode& branch)
{
    // Depth-first order without recursion, so a very deep tree cannot exhaust the stack.
    std::vector<DirNode*> order;
    std::vector<DirNode*> pending = {&branch};
    while (!pending.empty()) {
        DirNode* node = pending.back();
        pending.pop_back();
        order.push_back(node);
        for (const auto& child : node->subdirectories)
            pending.push_back(child.get());
    }
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        DirNode& node = **it;
        qint64 total = checkedAdd(node.directFileBytes, node.ownAllocatedSize);
        qint64 files = node.directFileCount;
        for (const auto& child : node.subdirectories) {
            total = checkedAdd(total, child->total);
            files += child->totalFileCount;
        }
        node.total = total;
        node.totalFileCount = files;
        if (node.isPackage)
            node.subdirectories.clear();
    }
}
