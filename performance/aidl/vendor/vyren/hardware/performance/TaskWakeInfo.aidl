package vendor.vyren.hardware.performance;
@VintfStability
parcelable TaskWakeInfo {
  int status;
  vendor.vyren.hardware.performance.ThreadInfo[] threads;
}
