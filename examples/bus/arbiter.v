// Gives the bus to one of two masters for as long as it asks. When both wait, the one that had
// the bus last waits longer.
`timescale 1ns / 1ns
module arbiter (
    input            clk,
    input            rst,
    input      [1:0] req,
    output reg [1:0] gnt
);
  reg last;

  always @(posedge clk)
    if (rst) begin
      gnt  <= 2'b00;
      last <= 1;
    end else if ((gnt & req) == 2'b00) begin
      gnt <= 2'b00;
      if (req == 2'b11 ? last : req[0]) begin
        gnt  <= 2'b01;
        last <= 0;
      end else if (req[1]) begin
        gnt  <= 2'b10;
        last <= 1;
      end
    end
endmodule
