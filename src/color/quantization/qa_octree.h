#pragma once

#include "quantization/quantizationalgorithm.h"

#include <cstdint>
#include <vector>

// An eight-way colour tree of depth 8, one level per bit: at level L the child is
// bit (7 - L) of red * 4 + bit (7 - L) of green * 2 + bit (7 - L) of blue. With nothing folded
// every leaf is one exact colour, which makes it the exact histogram of the median cut; with
// T = uint the leaves also carry a palette index for the nearest-colour search.
//
// The reduction folds only sparsely used branches: a node through which more than two colours
// passed is left alone, so the result may keep more colours than asked for. That is the
// intended behaviour, not the textbook "reduce the deepest level first".
template <typename T> class QA_Octree : public QuantizationAlgorithm
{
public:
    static constexpr uint32_t none = 0; // the root is node 0 and never anybody's child

    struct Node
    {
        uint32_t child[8] = {none, none, none, none, none, none, none, none};
        uint32_t sum[3] = {0, 0, 0};
        uint32_t passes = 0; // colours filed through or into the node
        uint32_t pixels = 0;
        uint8_t childCount = 0;
        T payload{};
    };

    QA_Octree() { m_nodes.emplace_back(); }

    int addColor(uint rgb) override
    {
        insert(rgb);
        return 0;
    }
    void setColorCount(uint n) override;
    // Depth first in child order; every childless node gives its mean, rounded to nearest.
    void getPalette(Palette<uint> &out) override;

    // Files one colour and returns its leaf.
    uint32_t insert(uint rgb);
    static int childIndex(uint rgb, int level)
    {
        const int bit = 7 - level;
        return int((((rgb >> (16 + bit)) & 1u) << 2) | (((rgb >> (8 + bit)) & 1u) << 1) |
                   ((rgb >> bit) & 1u));
    }

    uint leafCount() const { return m_leafCount; }
    const Node &node(uint32_t id) const { return m_nodes[id]; }
    Node &node(uint32_t id) { return m_nodes[id]; }
    size_t nodeCount() const { return m_nodes.size(); }

    // Calls f(nodeId) for every childless node holding pixels, depth first in child order.
    template <typename F> void forEachLeaf(F f) const { visit(0, f); }

private:
    template <typename F> void visit(uint32_t id, F &f) const
    {
        const Node &n = m_nodes[id];
        if (n.childCount == 0) {
            if (n.pixels > 0)
                f(id);
            return;
        }
        for (uint32_t c : n.child)
            if (c != none)
                visit(c, f);
    }
    void fold(uint32_t id, uint threshold);

    std::vector<Node> m_nodes;
    uint m_leafCount = 0;
    uint m_wanted = 0;
};

extern template class QA_Octree<char>;
extern template class QA_Octree<uint>;
