// A small first-in first-out buffer. A write into a full one is lost and raises overflow.
`timescale 1ns / 1ns
module fifo (
    input            clk,
    input            rst,
    input      [7:0] in,
    input            push,
    output     [7:0] out,
    input            pop,
    output           empty,
    output           full,
    output     [2:0] level,
    output reg       overflow
);
  reg [7:0] memory[0:3];
  reg [2:0] head;
  reg [2:0] tail;

  assign level = head - tail;
  assign empty = level == 0;
  assign full  = level == 4;
  assign out   = memory[tail[1:0]];

  always @(posedge clk)
    if (rst) begin
      head <= 0;
      tail <= 0;
      overflow <= 0;
    end else begin
      overflow <= push && full;
      if (push && !full) begin
        memory[head[1:0]] <= in;
        head <= head + 1;
      end
      if (pop && !empty) tail <= tail + 1;
    end
endmodule
