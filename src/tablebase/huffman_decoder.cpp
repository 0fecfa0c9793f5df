// Huffman blocks: a symbol count, then a bit stream (lowest bit of each byte
// first) that holds the code tree and then the codes.
#include "tablebase/block_decompression.h"

namespace {

constexpr int MaxNodes = 512;

struct HuffmanNode {
  bool leaf;
  uint8_t symbol;
  int16_t child[2];
};

class BitReader {
 public:
  BitReader(const uint8_t* bytes, uint32_t size) : bytes_(bytes), bitCount_(uint64_t(size) * 8) {}
  // False past the end of the payload.
  bool read(unsigned& bit) {
    if (position_ >= bitCount_) return false;
    bit = (bytes_[position_ >> 3] >> (position_ & 7)) & 1;
    ++position_;
    return true;
  }

 private:
  const uint8_t* bytes_;
  uint64_t bitCount_;
  uint64_t position_ = 0;
};

// A leaf is 1 and eight symbol bits; an inner node is 0, its first child, then its second.
bool readTree(BitReader& bits, HuffmanNode* nodes, int& used, int& index) {
  if (used >= MaxNodes) return false;
  index = used++;
  unsigned bit;
  if (!bits.read(bit)) return false;
  if (bit) {
    unsigned symbol = 0;
    for (int i = 0; i < 8; ++i) {
      unsigned b;
      if (!bits.read(b)) return false;
      symbol |= b << i;
    }
    nodes[index] = HuffmanNode{true, uint8_t(symbol), {-1, -1}};
    return true;
  }
  nodes[index].leaf = false;
  int first, second;
  if (!readTree(bits, nodes, used, first) || !readTree(bits, nodes, used, second)) return false;
  nodes[index].child[0] = int16_t(first);
  nodes[index].child[1] = int16_t(second);
  return true;
}

}  // namespace

bool decodeHuffman(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t) {
  if (payloadSize < 4) return false;
  uint32_t symbols = uint32_t(payload[0]) | uint32_t(payload[1]) << 8 | uint32_t(payload[2]) << 16 |
                     uint32_t(payload[3]) << 24;
  if (symbols > TransferAreaSize) return false;
  BitReader bits(payload + 4, payloadSize - 4);
  HuffmanNode nodes[MaxNodes];
  int used = 0, root;
  if (!readTree(bits, nodes, used, root)) return false;
  for (uint32_t i = 0; i < symbols; ++i) {
    int node = root;
    while (!nodes[node].leaf) {
      unsigned bit;
      if (!bits.read(bit)) return false;
      node = nodes[node].child[bit];
    }
    output[i] = nodes[node].symbol;
  }
  return true;
}
