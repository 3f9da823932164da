package vendor.vyren.hardware.performance;
@VintfStability
parcelable QuilbexVersionRet {
  int result;
  int major;
  int minor;
}
