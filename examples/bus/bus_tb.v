// Runs the bus long enough for some hundred transfers.
`timescale 1ns / 1ns
module bus_tb;
  reg clk = 0;
  reg rst = 1;

  always #5 clk = !clk;

  bus_system dut (
      .clk(clk),
      .rst(rst)
  );

  initial begin
    $dumpfile("bus.vcd");
    $dumpvars(1, dut);
    $dumpvars(0, dut.store.busy);
    #48 rst = 0;
    #59952 $finish;
  end
endmodule
