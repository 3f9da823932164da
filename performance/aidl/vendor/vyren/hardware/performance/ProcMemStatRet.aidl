package vendor.vyren.hardware.performance;
@VintfStability
parcelable ProcMemStatRet {
  int result;
  vendor.vyren.hardware.performance.ProcMemStat[] stats;
}
