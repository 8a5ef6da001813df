#include <benchmark/benchmark.h>

#ifdef NU_BENCH_LAPACK
#include <lapacke.h>
#endif
#ifdef NU_BENCH_OPENBLAS
extern "C" void openblas_set_num_threads(int count);
#endif

// The library runs on the caller's thread, so its peers get one thread, too; and they need not look for NaN first.
int main(int argc, char** argv) {
#ifdef NU_BENCH_OPENBLAS
  openblas_set_num_threads(1);
#endif
#ifdef NU_BENCH_LAPACK
  LAPACKE_set_nancheck(0);
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
