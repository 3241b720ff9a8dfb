# FFTPACK, the complex transforms: cffti, cfftf, cfftb for lines of any length.
#
# Two kinds of build are known. One has C names, works in double precision and takes the length by value, as a long. It
# keeps nothing between calls, so that threads do not meet in it, and is looked for first. The other keeps its Fortran
# names with an underscore, works in single precision and takes every argument by address; its integers have 64 or 32
# bits, and its loop counters are static: threads have to wait for one another.
#
# Target FFTPACK::FFTPACK, with the definitions
#   ORB_FFTPACK_DOUBLE    set for the first kind
#   ORB_FFTPACK_INTEGER   the type of the second kind's integers
include(CheckCXXSourceRuns)
include(FindPackageHandleStandardArgs)

find_library(FFTPACK_LIBRARY NAMES yor fftpack PATHS /usr/lib/yorick/lib /usr/lib/iraf/bin PATH_SUFFIXES yorick/lib)

if(FFTPACK_LIBRARY AND NOT FFTPACK_DEFINITION)
  set(CMAKE_REQUIRED_LIBRARIES ${FFTPACK_LIBRARY} m)
  # A work array that integers of 32 bits need is too short by half for those of 64, which also show where they are put:
  # the number of points is the first of them.
  check_cxx_source_runs("
    #include <cstring>
    extern \"C\" int cffti_(long long*, float*);
    int main() {
      alignas(8) float work[4 * 6 + 30] = {};
      long long n = 6;
      cffti_(&n, work);
      int words[4];
      std::memcpy(words, work + 4 * 6, sizeof(words));
      return words[0] == 6 && words[1] == 0 && words[2] == 2 && words[3] == 0 ? 0 : 1;
    }" FFTPACK_HAS_64_BIT_INTEGERS)
  if(FFTPACK_HAS_64_BIT_INTEGERS)
    set(definition ORB_FFTPACK_INTEGER=long\ long)
  else()
    check_cxx_source_runs("
      #include <cstring>
      extern \"C\" int cffti_(int*, float*);
      int main() {
        alignas(8) float work[4 * 6 + 30] = {};
        int n = 6;
        cffti_(&n, work);
        int words[2];
        std::memcpy(words, work + 4 * 6, sizeof(words));
        return words[0] == 6 && words[1] == 2 ? 0 : 1;
      }" FFTPACK_HAS_32_BIT_INTEGERS)
    if(FFTPACK_HAS_32_BIT_INTEGERS)
      set(definition ORB_FFTPACK_INTEGER=int)
    else()
      check_cxx_source_runs("
        extern \"C\" void cffti(long, double*);
        extern \"C\" void cfftf(long, double*, double*);
        int main() {
          double work[4 * 6 + 30] = {};
          double line[12] = {1.0};
          cffti(6, work);
          cfftf(6, line, work);
          return line[10] > 0.999 && line[10] < 1.001 ? 0 : 1;
        }" FFTPACK_HAS_DOUBLES)
      if(FFTPACK_HAS_DOUBLES)
        set(definition ORB_FFTPACK_DOUBLE)
      endif()
    endif()
  endif()
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(definition)
    set(FFTPACK_DEFINITION "${definition}" CACHE INTERNAL "what the build of FFTPACK is like")
  endif()
endif()

find_package_handle_standard_args(FFTPACK REQUIRED_VARS FFTPACK_LIBRARY FFTPACK_DEFINITION)
if(FFTPACK_FOUND AND NOT TARGET FFTPACK::FFTPACK)
  add_library(FFTPACK::FFTPACK UNKNOWN IMPORTED)
  set_target_properties(FFTPACK::FFTPACK PROPERTIES IMPORTED_LOCATION ${FFTPACK_LIBRARY}
    INTERFACE_COMPILE_DEFINITIONS "${FFTPACK_DEFINITION}")
endif()
