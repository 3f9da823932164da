package vendor.vyren.hardware.performance;
@VintfStability
parcelable ProcReqHal {
  String path;
  vendor.vyren.hardware.performance.ProcReqItemHal[] items;
}
