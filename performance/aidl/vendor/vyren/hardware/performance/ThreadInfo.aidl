package vendor.vyren.hardware.performance;
@VintfStability
parcelable ThreadInfo {
  int field1;
  int field2;
  int field3;
  int field4;
  int field5;
  int field6;
  int field7;
}
