#pragma once

/// Hides from the compiler what a pointer points to, so that it cannot call the operation directly.
template <class Object>
Object* opaque(Object* object) {
  asm volatile("" : "+r"(object) : : "memory");
  return object;
}
