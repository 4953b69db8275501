// An overlap library whose instance is given by the program that loads it.

#ifdef NULL_INSTANCE
#define GIVEN(options) nullptr
#else
extern "C" void* testOverlapInstance(const unsigned char* options);
#define GIVEN(options) testOverlapInstance(options)
#endif

extern "C" void* GetInstance([[maybe_unused]] const unsigned char* options) {
    return GIVEN(options);
}
