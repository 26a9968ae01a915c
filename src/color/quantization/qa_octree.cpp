#include "quantization/qa_octree.h"

template <typename T> uint32_t QA_Octree<T>::insert(uint rgb)
{
    uint32_t id = 0;
    for (int level = 0; level < 8; ++level) {
        ++m_nodes[id].passes;
        const int c = childIndex(rgb, level);
        uint32_t next = m_nodes[id].child[c];
        if (next == none) {
            next = uint32_t(m_nodes.size());
            m_nodes.emplace_back(); // may move the nodes: index again below
            m_nodes[id].child[c] = next;
            ++m_nodes[id].childCount;
        }
        id = next;
    }
    Node &leaf = m_nodes[id];
    if (leaf.pixels == 0)
        ++m_leafCount;
    leaf.sum[0] += (rgb >> 16) & 0xFF;
    leaf.sum[1] += (rgb >> 8) & 0xFF;
    leaf.sum[2] += rgb & 0xFF;
    ++leaf.passes;
    ++leaf.pixels;
    return id;
}

template <typename T> void QA_Octree<T>::setColorCount(uint n)
{
    m_wanted = n;
    fold(0, 2);
}

template <typename T> void QA_Octree<T>::fold(uint32_t id, uint threshold)
{
    if (m_nodes[id].passes > threshold || m_leafCount == m_wanted)
        return;
    for (int i = 0; i < 8; ++i) {
        const uint32_t c = m_nodes[id].child[i];
        if (c == none)
            continue;
        if (m_nodes[c].childCount > 0) {
            fold(c, threshold);
            continue;
        }
        Node &n = m_nodes[id];
        const Node &leaf = m_nodes[c];
        for (int k = 0; k < 3; ++k)
            n.sum[k] += leaf.sum[k];
        n.pixels += leaf.pixels;
        n.child[i] = none; // the node's storage is simply abandoned
        --n.childCount;
        --m_leafCount;
        if (m_leafCount < m_wanted) {
            // Gone below the count: the merged colours come back as one child in the emptied slot.
            const uint32_t fresh = uint32_t(m_nodes.size());
            m_nodes.emplace_back();
            Node &p = m_nodes[id];
            Node &f = m_nodes[fresh];
            for (int k = 0; k < 3; ++k)
                f.sum[k] = p.sum[k];
            f.pixels = p.pixels;
            p.child[i] = fresh;
            ++p.childCount;
            ++m_leafCount;
            return;
        }
    }
    if (m_nodes[id].childCount == 0)
        ++m_leafCount;
}

template <typename T> void QA_Octree<T>::getPalette(Palette<uint> &out)
{
    forEachLeaf([&](uint32_t id) {
        const Node &n = m_nodes[id];
        const auto mean = [&n](int k) { return uint(double(n.sum[k]) / double(n.pixels) + 0.5); };
        out.append(paletteColor(mean(0), mean(1), mean(2)));
    });
}

template class QA_Octree<char>;
template class QA_Octree<uint>;
