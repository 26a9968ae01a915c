#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// A table of one 32-bit value for every 24-bit colour, allocated in blocks of 8 x 8 x 8 colours
// as they are first written. Colours that differ only in their low three bits a channel share a
// 2 KiB block, so the neighbouring colours of a photograph and of error diffusion stay in the
// cache lines just used, and only the blocks of colours met are ever allocated. Absent values
// read as 0.
class ColorBlockTable
{
public:
    ColorBlockTable() : m_blocks(size_t(1) << 15, nullptr) {}
    ColorBlockTable(const ColorBlockTable &) = delete;
    ColorBlockTable &operator=(const ColorBlockTable &) = delete;

    uint32_t value(uint32_t rgb) const
    {
        const uint32_t *block = m_blocks[blockOf(rgb)];
        return block ? block[slotOf(rgb)] : 0u;
    }
    uint32_t &operator[](uint32_t rgb)
    {
        uint32_t *&block = m_blocks[blockOf(rgb)];
        if (!block)
            block = newBlock();
        return block[slotOf(rgb)];
    }

    // Calls f(rgb, value) for every non-zero value, block by block.
    template <typename F> void forEach(F f) const
    {
        for (uint32_t b = 0; b < m_blocks.size(); ++b) {
            const uint32_t *block = m_blocks[b];
            if (!block)
                continue;
            for (uint32_t s = 0; s < blockSize; ++s)
                if (block[s])
                    f(colorOf(b, s), block[s]);
        }
    }

    size_t allocatedBlocks() const { return m_used; }

private:
    static constexpr uint32_t blockSize = 512;
    static constexpr size_t blocksPerChunk = 64;

    static uint32_t blockOf(uint32_t rgb)
    {
        return ((rgb >> 9) & 0x7C00u) | ((rgb >> 6) & 0x3E0u) | ((rgb >> 3) & 0x1Fu);
    }
    static uint32_t slotOf(uint32_t rgb)
    {
        return ((rgb >> 10) & 0x1C0u) | ((rgb >> 5) & 0x38u) | (rgb & 7u);
    }
    static uint32_t colorOf(uint32_t block, uint32_t slot)
    {
        const uint32_t r = ((block >> 10) << 3) | (slot >> 6);
        const uint32_t g = (((block >> 5) & 31u) << 3) | ((slot >> 3) & 7u);
        const uint32_t b = ((block & 31u) << 3) | (slot & 7u);
        return (r << 16) | (g << 8) | b;
    }

    uint32_t *newBlock()
    {
        if (m_used % blocksPerChunk == 0)
            m_chunks.emplace_back(new uint32_t[blocksPerChunk * blockSize]());
        return m_chunks.back().get() + (m_used++ % blocksPerChunk) * blockSize;
    }

    std::vector<uint32_t *> m_blocks;
    std::vector<std::unique_ptr<uint32_t[]>> m_chunks;
    size_t m_used = 0;
};
