#include "quantization/colorindex.h"

#include <algorithm>

namespace {

// Beyond this many leaves to compare, a block remembers answers instead of comparing each time.
constexpr uint32_t mostCompared = 24;

} // namespace

ColorIndex::ColorIndex(const Palette<uint> &palette) : m_blocks(size_t(1) << 15)
{
    m_colors.reserve(size_t(palette.size()));
    for (int i = 0; i < palette.size(); ++i) {
        const RGBAColor<uint> &c = palette[i];
        const uint32_t rgb = (((c.r >> 8) & 0xFF) << 16) | (((c.g >> 8) & 0xFF) << 8) | ((c.b >> 8) & 0xFF);
        m_tree.node(m_tree.insert(rgb)).payload = uint(i);
        m_colors.push_back(rgb);
    }
    m_firstLeaf.assign(m_tree.nodeCount(), 0);
    m_endLeaf.assign(m_tree.nodeCount(), 0);
    // Leaves first, in depth-first order; then each node's run spans its children's runs.
    struct Walker
    {
        ColorIndex &self;
        void visit(uint32_t id)
        {
            const auto &n = self.m_tree.node(id);
            self.m_firstLeaf[id] = uint32_t(self.m_leafIndex.size());
            if (n.childCount == 0) {
                if (n.pixels > 0) {
                    self.m_leafR.push_back(int32_t((n.sum[0] / n.pixels) & 0xFF));
                    self.m_leafG.push_back(int32_t((n.sum[1] / n.pixels) & 0xFF));
                    self.m_leafB.push_back(int32_t((n.sum[2] / n.pixels) & 0xFF));
                    self.m_leafIndex.push_back(n.payload);
                }
            } else {
                for (uint32_t c : n.child)
                    if (c != QA_Octree<uint>::none)
                        visit(c);
            }
            self.m_endLeaf[id] = uint32_t(self.m_leafIndex.size());
        }
    };
    Walker{*this}.visit(0);
}

uint32_t ColorIndex::nearestIn(uint32_t node, uint32_t rgb) const
{
    const uint32_t first = m_firstLeaf[node], end = m_endLeaf[node];
    if (first == end)
        return 0;
    const size_t at =
        nearestColor(m_leafR.data() + first, m_leafG.data() + first, m_leafB.data() + first, end - first,
                     int32_t(rgb >> 16), int32_t((rgb >> 8) & 0xFF), int32_t(rgb & 0xFF));
    return m_leafIndex[first + at];
}

uint32_t ColorIndex::search(uint32_t rgb) const
{
    uint32_t path[9] = {0};
    int level = 0;
    while (level < 8) {
        const uint32_t child = m_tree.node(path[level]).child[QA_Octree<uint>::childIndex(rgb, level)];
        if (child == QA_Octree<uint>::none)
            break;
        path[++level] = child;
    }
    if (level == 8)
        return m_tree.node(path[8]).payload;
    // The node at `level` lacks the child and gives up, its parent gives up once more, and the
    // one above searches everything below it.
    return nearestIn(path[level >= 2 ? level - 2 : 0], rgb);
}

uint32_t ColorIndex::searchBelow(const uint32_t *path, uint32_t rgb) const
{
    uint32_t node = path[2];
    for (int level = 5; level < 8; ++level) {
        const uint32_t child = m_tree.node(node).child[QA_Octree<uint>::childIndex(rgb, level)];
        if (child == QA_Octree<uint>::none)
            return nearestIn(path[level - 5], rgb); // the node two levels up searches
        node = child;
    }
    return m_tree.node(node).payload;
}

ColorIndex::Block ColorIndex::prepare(uint32_t block)
{
    const int32_t lo[3] = {int32_t(block >> 10) << 3, int32_t((block >> 5) & 31u) << 3,
                           int32_t(block & 31u) << 3};
    const int32_t hi[3] = {lo[0] + 7, lo[1] + 7, lo[2] + 7};
    const uint32_t corner = uint32_t(lo[0] << 16 | lo[1] << 8 | lo[2]);
    // The first five levels of every path in the block, taken by its lowest colour.
    uint32_t path[6] = {0};
    int level = 0;
    while (level < 5) {
        const uint32_t child = m_tree.node(path[level]).child[QA_Octree<uint>::childIndex(corner, level)];
        if (child == QA_Octree<uint>::none)
            break;
        path[++level] = child;
    }

    Block b;
    if (level == 5) {
        if (m_endLeaf[path[3]] - m_firstLeaf[path[3]] <= mostCompared) {
            b.kind = Deep;
            b.first = uint32_t(m_deepPaths.size() / 3);
            m_deepPaths.insert(m_deepPaths.end(), {path[3], path[4], path[5]});
        } else {
            b.kind = Remembered;
            b.first = uint32_t(m_answers.size());
            m_answers.emplace_back(new uint32_t[512]());
        }
        m_blocks[block] = b;
        return b;
    }

    const uint32_t searched = path[level >= 2 ? level - 2 : 0];
    const uint32_t first = m_firstLeaf[searched], end = m_endLeaf[searched];
    const size_t start = m_positions.size();
    if (first != end)
        boxCandidates(m_leafR.data() + first, m_leafG.data() + first, m_leafB.data() + first, end - first, lo,
                      hi, m_positions);
    const size_t count = m_positions.size() - start;
    if (count <= 1) {
        b.kind = Answer;
        b.first = count == 1 ? m_leafIndex[first + m_positions[start]] : 0u; // an empty palette answers 0
        m_positions.resize(start);
    } else if (count <= mostCompared) {
        b.kind = Candidates;
        b.first = uint32_t(start);
        b.count = uint16_t(count);
        for (size_t i = start; i < m_positions.size(); ++i)
            m_positions[i] += first;
    } else {
        b.kind = Remembered;
        b.first = uint32_t(m_answers.size());
        m_answers.emplace_back(new uint32_t[512]());
        m_positions.resize(start);
    }
    m_blocks[block] = b;
    return b;
}
