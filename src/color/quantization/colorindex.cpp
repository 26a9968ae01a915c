#include "quantization/colorindex.h"

#include "quantization/nearestsearch.h"

ColorIndex::ColorIndex(const Palette<uint> &palette)
{
    m_colors.reserve(size_t(palette.size()));
    for (int i = 0; i < palette.size(); ++i) {
        const RGBAColor<uint> &c = palette[i];
        const uint32_t rgb = (((c.r >> 8) & 0xFF) << 16) | (((c.g >> 8) & 0xFF) << 8) | ((c.b >> 8) & 0xFF);
        m_tree.node(m_tree.insert(rgb)).payload = uint(i);
        m_colors.push_back(rgb);
        m_cache[rgb] = uint32_t(i) + 1;
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
