package vendor.vyren.hardware.performance;
@VintfStability
parcelable ProcMemStat {
  String name;
  boolean flag;
  char value18;
  int value20;
  int value24;
  int pid;
  int value32;
  int value36;
  int value40;
  int value44;
  int value48;
  int value52;
  int smapsTotal;
  int reserved;
  int smapsDalvikHeap;
  int smapsNativeMalloc;
  int value72;
  int value76;
  int value80;
}
