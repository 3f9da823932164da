package vendor.vyren.hardware.performance;
@VintfStability
parcelable ProcReqItemHal {
  String key;
  String separator;
  int flag;
}
