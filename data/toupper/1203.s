# The upper case of ISO-8859-15 RIGHT HALF.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO-8859-15.
# These stay as they are, since the set does not have their upper case:
# 5 _

TOUPPER CHARSET ISO-8859-15-RIGHT-HALF

(=& 8=4 \x3D=\x3C `=@ a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M
n=N o=O p=P q=Q r=R s=S t=T u=U v=V x=X y=Y z=Z {=[ |=\x5C }=] ~=^
