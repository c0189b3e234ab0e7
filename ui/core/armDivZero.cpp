// Division-by-zero hooks of the ARM run-time ABI.
//
// On 32-bit ARM, integer division is a call into the compiler's support
// library, whose default handler for a zero divisor calls raise(SIGFPE) and
// so would make the plug-in import `raise` from libc.  The library never
// divides by zero (every divisor is a constant or checked first), so these
// replacements only keep the import list to the memory functions: they
// return the value that the ABI lets a handler return.
#if defined(__arm__)

extern "C" {

__attribute__((visibility("hidden"))) int __aeabi_idiv0(int value) { return value; }

__attribute__((visibility("hidden"))) long long __aeabi_ldiv0(long long value) { return value; }

}

#endif
