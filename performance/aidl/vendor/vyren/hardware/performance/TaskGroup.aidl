package vendor.vyren.hardware.performance;
@Backing(type="int") @VintfStability
enum TaskGroup {
  GROUP_0 = 0,
  GROUP_1 = 1,
  GROUP_2 = 2,
  GROUP_3 = 3,
  GROUP_4 = 4,
  GROUP_5 = 5,
}
