// What an instruction reads or writes, of those that compilers make of C++. The assembler writes the bytes.

#include <gtest/gtest.h>

#include "checks/load/Operand.h"

#include <ucontext.h>

#include <string>
#include <vector>

namespace {

using vorn_testing::checks::Operand;

constexpr std::uintptr_t kRsi = 0x1000, kRdi = 0x2000, kR12 = 0x3000, kR13 = 0x4000, kRcx = 5;

struct Row {
  const char* text;
  const unsigned char* code;
  std::vector<Operand> operands;
};

#define AT(address, size, writes, changes) \
  Operand { address, size, writes, (size) > 8, changes }
#define CODE(text)                                                          \
  text, [] {                                                                \
    const unsigned char* code;                                              \
    asm volatile("jmp 2f\n1: " text "\n2: lea 1b(%%rip), %0" : "=r"(code)); \
    return code;                                                            \
  }()

std::vector<Operand> operandsOf(const unsigned char* code) {
  ucontext_t context = {};
  auto& registers = context.uc_mcontext.gregs;
  registers[REG_RIP] = reinterpret_cast<greg_t>(code);
  registers[REG_RSI] = kRsi;
  registers[REG_RDI] = kRdi;
  registers[REG_R12] = kR12;
  registers[REG_R13] = kR13;
  registers[REG_RCX] = kRcx;
  Operand operands[2];
  const std::size_t count = vorn_testing::checks::operandsOf(&context, operands);
  return {operands, operands + count};
}

void expect(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    const std::vector<Operand> found = operandsOf(row.code);
    ASSERT_EQ(found.size(), row.operands.size()) << row.text;
    for (std::size_t i = 0; i < found.size(); ++i) {
      EXPECT_EQ(found[i].address, row.operands[i].address) << row.text;
      EXPECT_EQ(found[i].size, row.operands[i].size) << row.text;
      EXPECT_EQ(found[i].writes, row.operands[i].writes) << row.text;
      EXPECT_EQ(found[i].changes, row.operands[i].changes) << row.text;
      EXPECT_EQ(found[i].wide, row.operands[i].wide) << row.text;
      const std::string text = row.text;
      EXPECT_EQ(found[i].locked, text.find("lock") == 0 || text.find("xchg") == 0) << text;
    }
  }
}

TEST(Operands, OfMoves) {
  expect({
      {CODE("movl %%eax, 8(%%rdi)"), {AT(kRdi + 8, 4, true, false)}},
      {CODE("movq 8(%%rdi), %%rax"), {AT(kRdi + 8, 8, false, false)}},
      {CODE("movw (%%rdi), %%r9w"), {AT(kRdi, 2, false, false)}},
      {CODE("movb %%r9b, -1(%%rdi)"), {AT(kRdi - 1, 1, true, false)}},
      {CODE("movb $1, (%%rsi)"), {AT(kRsi, 1, true, false)}},
      {CODE("movw $1, 4(%%rsi,%%rcx,4)"), {AT(kRsi + 4 * kRcx + 4, 2, true, false)}},
      {CODE("movl $1, 0x12345(%%r12)"), {AT(kR12 + 0x12345, 4, true, false)}},
      {CODE("movq $1, (%%r13)"), {AT(kR13, 8, true, false)}},
      {CODE("movq (%%r12,%%r13,2), %%rax"), {AT(kR12 + 2 * kR13, 8, false, false)}},
      {CODE("movl 0x40(,%%rcx,8), %%eax"), {AT(0x40 + 8 * kRcx, 4, false, false)}},
      {CODE("movzbl (%%rdi), %%eax"), {AT(kRdi, 1, false, false)}},
      {CODE("movswl (%%rdi), %%eax"), {AT(kRdi, 2, false, false)}},
      {CODE("movslq (%%rdi), %%rax"), {AT(kRdi, 4, false, false)}},
      {CODE("cmovel (%%rdi), %%eax"), {AT(kRdi, 4, false, false)}},
      {CODE("sete (%%rdi)"), {AT(kRdi, 1, true, false)}},
  });
}

TEST(Operands, OfWhatCalculates) {
  expect({
      {CODE("addl (%%rdi), %%eax"), {AT(kRdi, 4, false, false)}},
      {CODE("cmpl $1, (%%rdi)"), {AT(kRdi, 4, false, false)}},
      {CODE("cmpb %%al, (%%rdi)"), {AT(kRdi, 1, false, false)}},
      {CODE("testb $1, (%%rdi)"), {AT(kRdi, 1, false, false)}},
      {CODE("testq %%rax, (%%rdi)"), {AT(kRdi, 8, false, false)}},
      {CODE("imull (%%rdi), %%eax"), {AT(kRdi, 4, false, false)}},
      {CODE("imulq $3, (%%rdi), %%rax"), {AT(kRdi, 8, false, false)}},
      {CODE("divl (%%rdi)"), {AT(kRdi, 4, false, false)}},
  });
}

TEST(Operands, OfChangesInPlaceWithALockAndWithout) {
  expect({
      {CODE("addl $1, 8(%%rdi)"), {AT(kRdi + 8, 4, true, true)}},
      {CODE("lock addl $1, 8(%%rdi)"), {AT(kRdi + 8, 4, true, false)}},
      {CODE("addq $0x1000, (%%rdi)"), {AT(kRdi, 8, true, true)}},
      {CODE("orb $1, (%%rdi)"), {AT(kRdi, 1, true, true)}},
      {CODE("subw %%ax, (%%rdi)"), {AT(kRdi, 2, true, true)}},
      {CODE("lock subw %%ax, (%%rdi)"), {AT(kRdi, 2, true, false)}},
      {CODE("incq (%%rdi)"), {AT(kRdi, 8, true, true)}},
      {CODE("decb (%%rdi)"), {AT(kRdi, 1, true, true)}},
      {CODE("lock incq (%%rdi)"), {AT(kRdi, 8, true, false)}},
      {CODE("notq (%%rdi)"), {AT(kRdi, 8, true, true)}},
      {CODE("negl (%%rdi)"), {AT(kRdi, 4, true, true)}},
      {CODE("shll $3, (%%rdi)"), {AT(kRdi, 4, true, true)}},
      {CODE("sarq (%%rdi)"), {AT(kRdi, 8, true, true)}},
      {CODE("xchgl %%eax, (%%rdi)"), {AT(kRdi, 4, true, false)}},
      {CODE("lock cmpxchgq %%rdx, (%%rdi)"), {AT(kRdi, 8, true, false)}},
      {CODE("lock xaddl %%eax, (%%rdi)"), {AT(kRdi, 4, true, false)}},
  });
}

TEST(Operands, OfVectors) {
  expect({
      {CODE("movups (%%rdi), %%xmm0"), {AT(kRdi, 16, false, false)}},
      {CODE("movaps %%xmm9, (%%r12)"), {AT(kR12, 16, true, false)}},
      {CODE("movdqu (%%rdi), %%xmm0"), {AT(kRdi, 16, false, false)}},
      {CODE("movss (%%rdi), %%xmm0"), {AT(kRdi, 4, false, false)}},
      {CODE("movsd %%xmm0, (%%rdi)"), {AT(kRdi, 8, true, false)}},
      {CODE("movq %%xmm0, (%%rdi)"), {AT(kRdi, 8, true, false)}},
      {CODE("movq (%%rdi), %%xmm0"), {AT(kRdi, 8, false, false)}},
      {CODE("movd (%%rdi), %%xmm0"), {AT(kRdi, 4, false, false)}},
      {CODE("movhps %%xmm0, 8(%%rdi)"), {AT(kRdi + 8, 8, true, false)}},
      {CODE("vmovdqu (%%rdi), %%ymm0"), {AT(kRdi, 32, false, false)}},
      {CODE("vmovups %%xmm1, (%%r12,%%r13,8)"), {AT(kR12 + 8 * kR13, 16, true, false)}},
      {CODE("vmovdqu64 %%zmm0, 64(%%rdi)"), {AT(kRdi + 64, 64, true, false)}},
  });
}

TEST(Operands, OfRepetitions) {
  expect({
      {CODE("rep movsb"), {{kRdi, kRcx, true, true, false}, {kRsi, kRcx, false, true, false}}},
      {CODE("rep stosq"), {{kRdi, 8 * kRcx, true, true, false}}},
      {CODE("movsl"), {{kRdi, 4, true, true, false}, {kRsi, 4, false, true, false}}},
  });
}

/// From the end of the instruction, whatever follows the distance.
TEST(Operands, BesideTheInstruction) {
  struct Beside {
    Row row;
    std::uintptr_t length;
  };
  const Beside all[] = {
      {{CODE("movl 16(%%rip), %%eax"), {}}, 6},      {{CODE("movl $7, 16(%%rip)"), {}}, 10},
      {{CODE("movw $7, 16(%%rip)"), {}}, 9},         {{CODE("testl $7, 16(%%rip)"), {}}, 10},
      {{CODE("imull $3, 16(%%rip), %%eax"), {}}, 7}, {{CODE("addl $1, 16(%%rip)"), {}}, 7},
      {{CODE("movups %%xmm0, 16(%%rip)"), {}}, 7},   {{CODE("shll $3, 16(%%rip)"), {}}, 7}};
  for (const Beside& beside : all) {
    const std::vector<Operand> found = operandsOf(beside.row.code);
    ASSERT_EQ(found.size(), 1U) << beside.row.text;
    EXPECT_EQ(found[0].address, reinterpret_cast<std::uintptr_t>(beside.row.code) + beside.length + 16)
        << beside.row.text;
  }
}

/// Registers, addresses that are only calculated, and the thread's own memory.
TEST(Operands, OfNothing) {
  expect({{CODE("movl %%eax, %%ebx"), {}},
          {CODE("leaq 8(%%rdi), %%rax"), {}},
          {CODE("nopw 0(%%rax,%%rax,1)"), {}},
          {CODE("movq %%fs:0, %%rax"), {}},
          {CODE("prefetcht0 (%%rdi)"), {}},
          {CODE("addq $8, %%rsp"), {}},
          {CODE("vmovdqu64 (%%rdi), %%zmm0%{%%k1%}"), {}}});
}

}  // namespace
