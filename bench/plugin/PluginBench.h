#ifndef SONOLET_BENCH_PLUGIN_PLUGINBENCH_H
#define SONOLET_BENCH_PLUGIN_PLUGINBENCH_H

// The groups of sonolet-bench-plugin, which has the plug-in linked in: its classes by themselves,
// and the whole of it between a bare host and a bare library. Each reports its figures.
void benchPlugin();
void benchGrowth();
void benchSound();
void benchBase64();

#endif
