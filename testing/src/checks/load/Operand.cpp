// As much of the instructions of x86-64 as is needed to tell where the next one reads or writes. One that is not
// understood has no operand: less is seen then, and nothing wrong.

#include "Operand.h"

#include <ucontext.h>

#include <cstring>

namespace vorn_testing::checks {

#if defined(__x86_64__)

namespace {

using Byte = unsigned char;

constexpr int kRegisters[] = {REG_RAX, REG_RCX, REG_RDX, REG_RBX, REG_RSP, REG_RBP, REG_RSI, REG_RDI,
                              REG_R8,  REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15};

/// An instruction, taken apart.
struct Parts {
  int map = 0;  ///< Of opcodes: 0, 1 (0F), 2 (0F38), 3 (0F3A).
  Byte opcode = 0;
  int prefix = 0;             ///< 0x66, 0xf3 or 0xf2, the last of them.
  bool operand16 = false;     ///< 0x66 was there.
  bool wideRegister = false;  ///< REX.W.
  int x = 0, b = 0;
  std::uintptr_t vector = 0;  ///< Bytes of a vector, when its kind of prefix says so.
  bool evex = false, masked = false, segment = false, shortAddress = false, locked = false;
};

struct Reader {
  const Byte* at;
  Byte next() { return *at++; }
};

Parts take(Reader& code) {
  Parts parts;
  for (;;) {
    const Byte byte = *code.at;
    if (byte == 0x66) {
      parts.operand16 = true;
      if (!parts.prefix) parts.prefix = byte;
    } else if (byte == 0xf2 || byte == 0xf3) {
      parts.prefix = byte;
    } else if (byte == 0x64 || byte == 0x65) {
      parts.segment = true;
    } else if (byte == 0x67) {
      parts.shortAddress = true;
    } else if (byte == 0xf0) {
      parts.locked = true;
    } else if (byte != 0x2e && byte != 0x36 && byte != 0x3e && byte != 0x26) {
      break;
    }
    ++code.at;
  }
  constexpr int kPrefixes[] = {0, 0x66, 0xf3, 0xf2};
  if ((*code.at & 0xf0) == 0x40) {
    const Byte rex = code.next();
    parts.wideRegister = rex & 8;
    parts.x = rex & 2 ? 8 : 0;
    parts.b = rex & 1 ? 8 : 0;
  } else if (*code.at == 0xc5) {
    code.next();
    const Byte second = code.next();
    parts.map = 1;
    parts.vector = second & 4 ? 32 : 16;
    parts.prefix = kPrefixes[second & 3];
  } else if (*code.at == 0xc4 || *code.at == 0x62) {
    parts.evex = code.next() == 0x62;
    const Byte first = code.next(), second = code.next();
    parts.x = first & 0x40 ? 0 : 8;
    parts.b = first & 0x20 ? 0 : 8;
    parts.map = first & (parts.evex ? 7 : 31);
    parts.wideRegister = second & 0x80;
    parts.prefix = kPrefixes[second & 3];
    parts.vector = second & 4 ? 32 : 16;
    if (parts.evex) {
      const Byte third = code.next();
      parts.vector = std::uintptr_t{16} << (third >> 5 & 3);
      parts.masked = third & 7;
    }
  }
  parts.opcode = code.next();
  if (!parts.vector && parts.opcode == 0x0f) {
    parts.map = 1;
    parts.opcode = code.next();
    if (parts.opcode == 0x38 || parts.opcode == 0x3a) {
      parts.map = parts.opcode == 0x38 ? 2 : 3;
      parts.opcode = code.next();
    }
  }
  return parts;
}

/// What an instruction does with its operand in memory; a size of 0: nothing that is understood.
struct Use {
  std::uintptr_t size;
  bool writes;
  int immediate;  ///< Bytes that follow the operand.
};

Use useOfFirst(const Parts& parts, int number) {
  const Byte code = parts.opcode;
  const std::uintptr_t word = parts.wideRegister ? 8 : parts.operand16 ? 2 : 4;
  const int immediate = parts.operand16 ? 2 : 4;
  if (code < 0x40)
    return {(code & 7) < 4 ? (code & 1 ? word : 1) : 0, (code & 7) < 2 && (code & 0x38) != 0x38, 0};
  switch (code) {
    case 0x63:
      return {4, false, 0};
    case 0x69:
      return {word, false, immediate};
    case 0x6b:
      return {word, false, 1};
    case 0x80:
    case 0x83:
      return {code == 0x80 ? 1 : word, number != 7, 1};
    case 0x81:
      return {word, number != 7, immediate};
    case 0x84:
    case 0x8a:
      return {1, false, 0};
    case 0x85:
    case 0x8b:
      return {word, false, 0};
    case 0x86:
    case 0x88:
      return {1, true, 0};
    case 0x87:
    case 0x89:
      return {word, true, 0};
    case 0xc0:
    case 0xc1:
      return {code & 1 ? word : 1, true, 1};
    case 0xc6:
      return {1, true, 1};
    case 0xc7:
      return {word, true, immediate};
    case 0xd0:
    case 0xd1:
    case 0xd2:
    case 0xd3:
      return {code & 1 ? word : 1, true, 0};
    case 0xf6:
      return {1, number == 2 || number == 3, number < 2 ? 1 : 0};
    case 0xf7:
      return {word, number == 2 || number == 3, number < 2 ? immediate : 0};
    case 0xfe:
      return {1, true, 0};
    case 0xff:
      return {number < 2 ? word : 8, number < 2, 0};
    default:
      return {0, false, 0};
  }
}

/// Whether it reads what stands there and writes what comes of it.
bool changes(const Parts& parts, int number) {
  const Byte code = parts.opcode;
  if (parts.map != 0) return false;
  if (code < 0x40) return (code & 7) < 2 && (code & 0x38) != 0x38;
  return (code >= 0x80 && code <= 0x83 && number != 7) || code == 0xc0 || code == 0xc1 ||
         (code >= 0xd0 && code <= 0xd3) || ((code == 0xf6 || code == 0xf7) && (number == 2 || number == 3)) ||
         ((code == 0xfe || code == 0xff) && number < 2);
}

Use useOfSecond(const Parts& parts) {
  const Byte code = parts.opcode;
  const std::uintptr_t word = parts.wideRegister ? 8 : parts.operand16 ? 2 : 4;
  const std::uintptr_t vector = parts.vector ? parts.vector : 16;
  const std::uintptr_t number = parts.prefix == 0xf3 ? 4 : parts.prefix == 0xf2 ? 8 : vector;
  switch (code) {
    case 0x10:
    case 0x11:
      return {number, code == 0x11, 0};
    case 0x12:
    case 0x13:
    case 0x16:
    case 0x17:
      return {8, (code & 1) != 0, 0};
    case 0x28:
    case 0x29:
      return {vector, code == 0x29, 0};
    case 0x6e:
      return {parts.wideRegister ? 8u : 4u, false, 0};
    case 0x7e:
      return {parts.prefix == 0xf3 || parts.wideRegister ? 8u : 4u, parts.prefix != 0xf3, 0};
    case 0x6f:
    case 0x7f:
      return {parts.vector || parts.prefix ? vector : 8, code == 0x7f, 0};
    case 0xd6:
      return {8, true, 0};
    case 0xe7:
      return {vector, true, 0};
    case 0xb6:
    case 0xbe:
      return {1, false, 0};
    case 0xb7:
    case 0xbf:
      return {2, false, 0};
    case 0xaf:
      return {word, false, 0};
    case 0xb0:
    case 0xc0:
      return {1, true, 0};
    case 0xb1:
    case 0xc1:
      return {word, true, 0};
    default:
      if (parts.vector) return {0, false, 0};
      if (code >= 0x40 && code <= 0x4f) return {word, false, 0};
      if (code >= 0x90 && code <= 0x9f) return {1, true, 0};
      return {0, false, 0};
  }
}

}  // namespace

std::uintptr_t instructionOf(const void* context) {
  return static_cast<std::uintptr_t>(static_cast<const ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
}

std::size_t operandsOf(const void* context, Operand (&operands)[2]) {
  const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
  const auto valueOf = [&](int number) { return static_cast<std::uintptr_t>(registers[kRegisters[number]]); };
  Reader code{reinterpret_cast<const Byte*>(instructionOf(context))};
  const Parts parts = take(code);
  if (parts.segment || parts.shortAddress || parts.masked || parts.map > 1) return 0;
  constexpr int kSource = 6, kTarget = 7;
  if (parts.map == 0 &&
      (parts.opcode == 0xa4 || parts.opcode == 0xa5 || parts.opcode == 0xaa || parts.opcode == 0xab)) {
    const std::uintptr_t unit = parts.opcode & 1 ? (parts.wideRegister ? 8 : parts.operand16 ? 2 : 4) : 1;
    const bool repeats = parts.prefix == 0xf3 || parts.prefix == 0xf2;
    const std::uintptr_t size = repeats ? unit * valueOf(1) : unit;
    if (size == 0) return 0;
    operands[0] = {valueOf(kTarget), size, true, true, false};
    operands[1] = {valueOf(kSource), size, false, true, false};
    return parts.opcode < 0xa8 ? 2 : 1;
  }
  const Byte form = code.next();
  const int mode = form >> 6, number = form >> 3 & 7, low = form & 7;
  if (mode == 3) return 0;
  const Use use = parts.map == 0 ? useOfFirst(parts, number) : useOfSecond(parts);
  if (use.size == 0) return 0;
  if (parts.evex && use.size != parts.vector) return 0;
  std::uintptr_t address = 0;
  bool fromNext = false, far = mode == 2;
  if (low == 4) {
    const Byte scaled = code.next();
    const int index = (scaled >> 3 & 7) + parts.x, base = (scaled & 7) + parts.b;
    if (index != 4) address = valueOf(index) << (scaled >> 6);
    if ((scaled & 7) == 5 && mode == 0)
      far = true;
    else
      address += valueOf(base);
  } else if (low == 5 && mode == 0) {
    far = fromNext = true;
  } else {
    address = valueOf(low + parts.b);
  }
  if (far) {
    std::int32_t distance = 0;
    std::memcpy(&distance, code.at, sizeof distance);
    code.at += sizeof distance;
    address += static_cast<std::uintptr_t>(static_cast<std::intptr_t>(distance));
  } else if (mode == 1) {
    std::uintptr_t distance = code.next();
    if (distance & 0x80) distance -= 0x100;
    address += distance * (parts.evex ? parts.vector : 1);
  }
  if (fromNext)
    address += reinterpret_cast<std::uintptr_t>(code.at) + static_cast<std::uintptr_t>(use.immediate);
  operands[0] = {address,
                 use.size,
                 use.writes,
                 use.size > 8,
                 !parts.locked && changes(parts, number),
                 parts.locked || (parts.map == 0 && (parts.opcode == 0x86 || parts.opcode == 0x87))};
  return 1;
}

#else

std::uintptr_t instructionOf(const void*) { return 0; }
std::size_t operandsOf(const void*, Operand (&)[2]) { return 0; }

#endif

}  // namespace vorn_testing::checks
