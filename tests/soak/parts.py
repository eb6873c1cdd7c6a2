"""How the user brings a part to its panel and reads its wipers there. One row a part."""

from dataclasses import dataclass

I2C, SPI, UP_DOWN, PUSH_BUTTON = 2, 3, 4, 5  # rows of the start panel's list


@dataclass(frozen=True)
class Part:
    row: int
    panel: str
    entry: str  # of the panel's menu; "" where there is nothing to choose
    table: str = ""  # row of a parameter file, for parts that have no entry of their own
    form: str = ""  # panel that the wipers are read on, if not the device panel
    before: tuple = ()  # gestures on the device panel ahead of the reading
    read: str = "cmdI2Read({})"
    shown: str = "lblPotRead({})"
    base: int = 10
    wipers: int = 1
    last: int = 0  # position at the upper stop, for parts whose volts alone can be read

    @property
    def reader(self):
        return self.form or self.panel


USER, SPI1 = "frmVRK_User1", "frmVRK_SPI1"
HEX = {"shown": "lblRDWcr({})", "read": "cmdRdWCR({})", "base": 16, "wipers": 4}
TEN_BIT = {"shown": "lblRdq331x({})", "read": "CMDq331X_Read({})", "base": 16}

PARTS = {
    "KV4071": Part(I2C, USER, "mnu_KV4071"),
    "KV4074": Part(I2C, USER, "mnu_KV4074", wipers=4),
    "KV4078": Part(I2C, USER, "mnuKV4078", wipers=4),
    "KV6021": Part(I2C, USER, "mnuKV6021"),
    "KV4180": Part(SPI, SPI1, "mnuKV4180", wipers=4),
    "KV4184": Part(SPI, SPI1, "mnuKV4184", wipers=4),
    "Q4422": Part(I2C, USER, "mnu_I2cList", "bank,Q4422,4,256,50,05,00,NA,r,s,t,u,1,1,", wipers=4),
    "Q4410": Part(I2C, USER, "mnu_I2cList", "quad,Q4410/9,4,256,50,NA,NA,NA,r,s,t,u,1,1,", form="frm_q4410",
                  before=("cmdShowq4410",), **HEX),
    "Q4420": Part(SPI, SPI1, "mnu_SPI_List", "quad,Q4420/1,4,256,50,NA,NA,NA,NA,NA,A0,90,1,1,3,3,r,s,",
                  form="frm_q4420", before=("cmdShowq4410",), **HEX),
    "Q3318": Part(I2C, USER, "mnu_I2cList", "ten bits,Q3318/9,1,1024,50,NA,NA,NA,r,s,t,u,1,1,", **TEN_BIT),
    "Q3310": Part(SPI, SPI1, "mnu_SPI_List", "ten bits,Q3310/1,1,1024,50,NA,NA,NA,NA,NA,A0,80,1,1,4,4,r,s,",
                  form="Frm3310", before=("cmdI2Read(0)",), **TEN_BIT),
    "UPDN100": Part(UP_DOWN, "frmVRK_UD1", "", read="cmdSampleWiper", shown="lblWiperVolts", last=100),
    "PB64": Part(PUSH_BUTTON, "frmVRK_PB1", "", before=("cmdAlloutsHigh",), read="cmdSampleWiper({})", shown="lblWiperVolts({})", last=63),
}


def parameter_file(part):
    """A table with the part's row alone, ended as the program ends its own."""
    heads = ",".join(f"column {number}" for number in range(part.table.count(",") + 1))
    return f"{heads}\n{part.table}\nEND\n"
