# Writes the stubs: exported functions that jump to where their entries in a table point. Their names are those that an
# object of ours refers to and does not have.
#   cmake -DNM=... -DOBJECT=... -DPROCESSOR=... -DOUTPUT=... -P Stubs.cmake
execute_process(COMMAND ${NM} --undefined-only --format=posix ${OBJECT} OUTPUT_VARIABLE undefined RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${NM} cannot read ${OBJECT}: ${failed}")
endif()
string(REGEX MATCHALL "_ZN26VornDeviceAbstractionLayer[A-Za-z0-9_]+|_ZN22DeviceAbstractionLayer[0-9]+[A-Za-z]+11getInstanceEv" names "${undefined}")
list(FILTER names EXCLUDE REGEX "D[012]Ev$")
# The same constructor as a base class's; nothing here derives from an adapter.
set(all ${names})
foreach(name ${names})
  if(name MATCHES "C1E")
    string(REPLACE "C1E" "C2E" name "${name}")
    list(APPEND all ${name})
  endif()
endforeach()
list(REMOVE_DUPLICATES all)
list(SORT all)
list(LENGTH all count)

# Before the first call, or our constructor, each entry leads on to vornCapturePrepare(): a program's own constructors may
# call sooner. What a branch may lead to is marked, for processors that check it.
if(PROCESSOR MATCHES "aarch64|arm64")
  set(word ".xword")
  set(kind "%")
  set(jump "hint 34\n  adrp x16, vornCaptureTargets+@\n  ldr x16, [x16, :lo12:vornCaptureTargets+@]\n  br x16")
  set(first "hint 34\n  mov x17, #&\n  b vornCaptureFirst")
  set(prepare "  hint 34
  stp x29, x30, [sp, #-224]!
  .cfi_def_cfa_offset 224
  .cfi_offset x29, -224
  .cfi_offset x30, -216
  mov x29, sp
  stp x0, x1, [sp, #16]
  stp x2, x3, [sp, #32]
  stp x4, x5, [sp, #48]
  stp x6, x7, [sp, #64]
  stp x8, x17, [sp, #80]
  stp q0, q1, [sp, #96]
  stp q2, q3, [sp, #128]
  stp q4, q5, [sp, #160]
  stp q6, q7, [sp, #192]
  bl vornCapturePrepare
  ldp q6, q7, [sp, #192]
  ldp q4, q5, [sp, #160]
  ldp q2, q3, [sp, #128]
  ldp q0, q1, [sp, #96]
  ldp x8, x17, [sp, #80]
  ldp x6, x7, [sp, #64]
  ldp x4, x5, [sp, #48]
  ldp x2, x3, [sp, #32]
  ldp x0, x1, [sp, #16]
  ldp x29, x30, [sp], #224
  .cfi_def_cfa_offset 0
  adrp x16, vornCaptureTargets
  add x16, x16, :lo12:vornCaptureTargets
  ldr x16, [x16, x17, lsl #3]
  br x16")
elseif(PROCESSOR MATCHES "x86_64|AMD64")
  set(word ".quad")
  set(kind "@")
  set(jump "endbr64\n  jmp *vornCaptureTargets+@(%rip)")
  set(first "endbr64\n  movl $&, %r11d\n  jmp vornCaptureFirst")
  set(prepare "  endbr64
  subq $200, %rsp
  .cfi_def_cfa_offset 208
  movq %rdi, (%rsp)
  movq %rsi, 8(%rsp)
  movq %rdx, 16(%rsp)
  movq %rcx, 24(%rsp)
  movq %r8, 32(%rsp)
  movq %r9, 40(%rsp)
  movq %r11, 48(%rsp)
  movups %xmm0, 64(%rsp)
  movups %xmm1, 80(%rsp)
  movups %xmm2, 96(%rsp)
  movups %xmm3, 112(%rsp)
  movups %xmm4, 128(%rsp)
  movups %xmm5, 144(%rsp)
  movups %xmm6, 160(%rsp)
  movups %xmm7, 176(%rsp)
  call vornCapturePrepare
  movups 176(%rsp), %xmm7
  movups 160(%rsp), %xmm6
  movups 144(%rsp), %xmm5
  movups 128(%rsp), %xmm4
  movups 112(%rsp), %xmm3
  movups 96(%rsp), %xmm2
  movups 80(%rsp), %xmm1
  movups 64(%rsp), %xmm0
  movq 48(%rsp), %r11
  movq 40(%rsp), %r9
  movq 32(%rsp), %r8
  movq 24(%rsp), %rcx
  movq 16(%rsp), %rdx
  movq 8(%rsp), %rsi
  movq (%rsp), %rdi
  addq $200, %rsp
  .cfi_def_cfa_offset 8
  leaq vornCaptureTargets(%rip), %rax
  jmp *(%rax,%r11,8)")
else()
  message(FATAL_ERROR "The capture knows x86-64 and 64-bit ARM, not ${PROCESSOR}.")
endif()

# A literal for each function: compilers may refuse one that is longer than 65536 characters.
set(functions)
set(firsts)
set(targets)
set(pointers)
set(texts)
set(index 0)
foreach(name ${all})
  math(EXPR place "${index} * 8")
  string(REPLACE "@" ${place} here "${jump}")
  string(APPEND functions "  .balign 16\n  .globl ${name}\n  .type ${name}, ${kind}function\n${name}:\n  .cfi_startproc\n  ${here}\n  .cfi_endproc\n  .size ${name}, .-${name}\n)\");\nasm(R\"(\n  .text\n")
  string(REPLACE "&" ${index} here "${first}")
  string(APPEND firsts ".Lfirst${index}:\n  ${here}\n")
  string(APPEND targets "  ${word} .Lfirst${index}\n")
  string(APPEND pointers "  ${word} .Lname${index}\n")
  string(APPEND texts ".Lname${index}: .asciz \"${name}\"\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUTPUT} "asm(R\"(
  .text
  .balign 16
  .globl vornCaptureStubs
  .hidden vornCaptureStubs
vornCaptureStubs:
${functions}
  .type vornCaptureFirst, ${kind}function
vornCaptureFirst:
  .cfi_startproc
${prepare}
  .cfi_endproc
  .size vornCaptureFirst, .-vornCaptureFirst
${firsts}
  .section .data.rel,\"aw\"
  .balign 16
  .globl vornCaptureTargets
  .hidden vornCaptureTargets
vornCaptureTargets:
${targets}
  .section .data.rel.ro,\"aw\"
  .balign 8
  .globl vornCaptureNames
  .hidden vornCaptureNames
vornCaptureNames:
${pointers}
  .section .rodata
  .balign 8
  .globl vornCaptureCount
  .hidden vornCaptureCount
vornCaptureCount: ${word} ${count}
${texts}
  .text
)\");
")
